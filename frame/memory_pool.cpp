// Pools of blocks of one size. Small blocks are cut from slabs and kept for the next request; a block of more than a
// page comes from the system and goes back to it, since few of a size are alive together.
//
// The pools are made on first use and never destroyed: objects with static storage may give blocks back after every
// destructor of ours has run. All slabs stay reachable through their pool.
#include <studystats/host_framework.h>

#include <map>
#include <mutex>
#include <new>

namespace kel {
namespace {

constexpr std::size_t kLargestInSlab = 4096;
constexpr std::size_t kSlab = 16384;

// A multiple of the size of a link keeps every block aligned as its size demands: a type's size is a multiple of its
// alignment, and slabs begin at the strictest alignment.
std::size_t roundedUp(std::size_t blockSize) {
  constexpr std::size_t kStep = sizeof(void*);
  return blockSize <= kStep ? kStep : (blockSize + kStep - 1) / kStep * kStep;
}

struct Registry {
  std::mutex guard;
  std::map<std::size_t, MemoryPool*> pools;
};

Registry& registry() {
  static Registry& immortal = *new Registry;
  return immortal;
}

}  // namespace

MemoryPool::MemoryPool(std::size_t blockSize) noexcept : blockSize_(blockSize) {}

MemoryPool& MemoryPool::GetPool(std::size_t blockSize) {
  const std::lock_guard lock(registry().guard);
  MemoryPool*& pool = registry().pools[blockSize];
  if (pool == nullptr) pool = new MemoryPool(blockSize);
  return *pool;
}

void* MemoryPool::allocate() {
  if (blockSize_ > kLargestInSlab) return ::operator new(blockSize_);
  const std::lock_guard lock(guard_);
  if (free_ != nullptr) {
    Link* const block = free_;
    free_ = block->next;
    return block;
  }
  if (fresh_ == freshEnd_) addSlab();
  char* const block = fresh_;
  fresh_ += roundedUp(blockSize_);
  return block;
}

bool MemoryPool::deallocate(void* block) {
  if (block == nullptr) return false;
  if (blockSize_ > kLargestInSlab) {
    ::operator delete(block);
    return true;
  }
  const std::lock_guard lock(guard_);
  free_ = new (block) Link{free_};
  return true;
}

void MemoryPool::addSlab() {
  constexpr std::size_t kHead = alignof(std::max_align_t);  // room for the slab's own link
  static_assert(kHead >= sizeof(Link));
  const std::size_t bytes = kSlab / roundedUp(blockSize_) * roundedUp(blockSize_);
  char* const slab = static_cast<char*>(::operator new(kHead + bytes));
  slabs_ = new (slab) Link{slabs_};
  fresh_ = slab + kHead;
  freshEnd_ = fresh_ + bytes;
}

}  // namespace kel
