// Files are written whole or not at all.
#include <gtest/gtest.h>
#include <studystats/host.h>

#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

namespace studystats {
namespace {

namespace fs = std::filesystem;

class Files : public ::testing::Test {
 protected:
  void SetUp() override {
    folder_ = fs::path(::testing::TempDir()) / ("studystats_files_" + std::to_string(::getpid()));
    fs::create_directories(folder_);
    mask_ = ::umask(027);
  }
  void TearDown() override {
    ::umask(mask_);
    fs::remove_all(folder_);
  }
  std::string in(const std::string& name) const { return folder_ / name; }
  static std::string content(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }
  static mode_t mode(const std::string& path) {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 ? status.st_mode & 07777 : 0;
  }
  std::size_t filesInFolder() const {
    return static_cast<std::size_t>(std::distance(fs::directory_iterator(folder_), fs::directory_iterator()));
  }
  static std::string refusal(const std::string& path) {
    try {
      writeFile(path, "new");
    } catch (const BadOptions& error) {
      EXPECT_EQ(error.where().file, path);
      return error.what();
    }
    return "written";
  }

 private:
  fs::path folder_;
  mode_t mask_ = 0;
};

TEST_F(Files, GetPermissionsByTheMaskAndKeepThoseTheyHad) {
  const std::string path = in("a.csv"), bytes("x\n\0y", 4);
  writeFile(path, bytes);
  EXPECT_EQ(content(path), bytes);
  EXPECT_EQ(mode(path), 0640u);
  ASSERT_EQ(::chmod(path.c_str(), 0604), 0);
  writeFile(path, "");
  EXPECT_EQ(content(path), "");
  EXPECT_EQ(mode(path), 0604u);
  EXPECT_EQ(filesInFolder(), 1u);
}

TEST_F(Files, AreReplacedWhereALinkLeads) {
  writeFile(in("real.csv"), "old");
  fs::create_symlink("real.csv", in("link.csv"));
  writeFile(in("link.csv"), "new");
  EXPECT_TRUE(fs::is_symlink(in("link.csv")));
  EXPECT_EQ(content(in("real.csv")), "new");
}

TEST_F(Files, ThatAreNoRegularFilesAreWrittenToAndStay) {
  writeFile("/dev/null", "gone");
  EXPECT_TRUE(fs::is_character_file("/dev/null"));
}

TEST_F(Files, ThatCannotBeWrittenLeaveNothingBehind) {
  EXPECT_EQ(refusal(in("nosuch/a.csv")), "cannot write " + in("nosuch/a.csv") + ": there is no such file or folder.");
  EXPECT_EQ(refusal(in(".")), "cannot write " + in(".") + ": it is a folder.");
  EXPECT_EQ(refusal("/dev/full"), "cannot write /dev/full: the disk is full.");
  writeFile(in("kept.csv"), "old");
  ASSERT_EQ(::chmod(in("kept.csv").c_str(), 0444), 0);
  if (::geteuid() != 0) {
    EXPECT_EQ(refusal(in("kept.csv")), "cannot write " + in("kept.csv") + ": permission is denied.");
    EXPECT_EQ(content(in("kept.csv")), "old");
  }
  EXPECT_EQ(filesInFolder(), 1u);
}

// A limit on the size of files stands in for a disk that fills while it is written to.
TEST_F(Files, ThatFailHalfwayLeaveTheOldOneAndNothingElse) {
  const std::string path = in("kept.csv");
  writeFile(path, "old");
  rlimit before{};
  ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
  const auto handler = std::signal(SIGXFSZ, SIG_IGN);
  const rlimit small{100000, before.rlim_max};
  ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
  EXPECT_THROW(writeFile(path, std::string(300000, 'x')), BadOptions);
  EXPECT_THROW(writeFile(in("other.csv"), std::string(300000, 'x')), BadOptions);
  ::setrlimit(RLIMIT_FSIZE, &before);
  std::signal(SIGXFSZ, handler);
  EXPECT_EQ(content(path), "old");
  EXPECT_EQ(filesInFolder(), 1u);
}

TEST(Errors, GiveTheCommandsStatusAndRemarksTheirLine) {
  EXPECT_EQ(BadOptions("a").exitStatus(), 2);
  EXPECT_EQ(BadTable("a").exitStatus(), 2);
  EXPECT_EQ(NotComputed("a").exitStatus(), 1);
  EXPECT_EQ(OutOfMemory("a").exitStatus(), 1);
  std::ostringstream lines;
  lines << Remark{Severity::Warning, "code", "seen", {}} << '\n' << Remark{Severity::Note, "code", "seen", {}};
  EXPECT_EQ(lines.str(), "warning: seen\nnote: seen");
}

}  // namespace
}  // namespace studystats
