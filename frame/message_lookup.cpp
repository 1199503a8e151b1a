#include <studystats/frame.h>

#include <map>

const char* ID2MessageString(int id) {
  static const std::map<std::int32_t, const char*> messages;
  const auto entry = messages.find(id);
  return entry == messages.end() ? nullptr : entry->second;
}
