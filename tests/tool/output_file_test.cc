#include "output_file.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace qel::tool {
namespace {

namespace fs = std::filesystem;

class OutputFileTest : public ::testing::Test {
 protected:
  OutputFileTest() {
    fs::create_directory(folder_);
    std::ofstream(path("old")) << "old";
  }
  ~OutputFileTest() override { fs::remove_all(folder_); }

  std::string path(const char* name) const { return folder_ / name; }

  static std::string content(const std::string& path) {
    std::ostringstream text;
    text << std::ifstream(path).rdbuf();
    return text.str();
  }

  // The number of files in the folder.
  std::ptrdiff_t fileCount() const {
    return std::distance(fs::directory_iterator(folder_), fs::directory_iterator());
  }

  static std::string errorOf(const std::string& path, const std::vector<std::string>& inputs) {
    try {
      OutputFile output(path, inputs);
      return "(no error)";
    } catch (const OutputError& error) {
      return error.what();
    }
  }

  const fs::path folder_ = fs::temp_directory_path() / ("qel-output-" + std::to_string(getpid()));
};

TEST_F(OutputFileTest, AppearsWhenItIsCommitted) {
  OutputFile output(path("new"), {});
  EXPECT_TRUE(output.needsCommit());
  output.write("one\n");
  output.write("two\n");
  EXPECT_FALSE(fs::exists(path("new")));
  output.commit();
  EXPECT_FALSE(output.needsCommit());
  EXPECT_EQ(content(path("new")), "one\ntwo\n");
  EXPECT_EQ(fileCount(), 2);
}

TEST_F(OutputFileTest, LeavesNothingWithoutACommit) {
  {
    OutputFile output(path("old"), {});
    output.write("new");
  }
  EXPECT_EQ(content(path("old")), "old");
  EXPECT_EQ(fileCount(), 1);
}

TEST_F(OutputFileTest, GetsTheModeOfTheFileThatItReplacesOrOfANewFile) {
  chmod(path("old").c_str(), 0604);
  std::ofstream(path("usual")) << "";
  for (const char* const name : {"old", "new"}) {
    OutputFile output(path(name), {});
    output.commit();
  }
  EXPECT_EQ(fs::status(path("old")).permissions(), fs::perms(0604));
  EXPECT_EQ(fs::status(path("new")).permissions(), fs::status(path("usual")).permissions());
}

TEST_F(OutputFileTest, ReplacesTheFileOfALink) {
  fs::create_symlink("old", path("link"));
  OutputFile output(path("link"), {});
  output.write("new");
  output.commit();
  EXPECT_TRUE(fs::is_symlink(path("link")));
  EXPECT_EQ(content(path("old")), "new");
}

TEST_F(OutputFileTest, WritesADeviceDirectly) {
  OutputFile output("/dev/null", {});
  EXPECT_FALSE(output.needsCommit());
  output.write("text");
  output.commit();
  EXPECT_TRUE(fs::is_character_file("/dev/null"));
}

TEST_F(OutputFileTest, FailsIfTheFileCannotBeCreated) {
  EXPECT_EQ(errorOf(path("no/file"), {}),
            "cannot write " + path("no/file") + ": No such file or directory");
  EXPECT_EQ(errorOf(folder_, {}), "cannot write " + folder_.string() + ": Is a directory");
  EXPECT_EQ(errorOf(path("new/"), {}), "cannot write " + path("new/") + ": Is a directory");
  EXPECT_EQ(errorOf("", {}), "expected a file to write to, or - for standard output, found \"\"");
}

TEST_F(OutputFileTest, FailsIfTheDiskIsFull) {
  OutputFile output("/dev/full", {});
  EXPECT_THROW(output.write("text"), OutputError);
  EXPECT_NO_THROW(output.write(""));
}

TEST_F(OutputFileTest, RefusesAnInput) {
  fs::create_hard_link(path("old"), path("same"));
  for (const char* const name : {"old", "same"}) {
    EXPECT_EQ(errorOf(path(name), {path("other"), path("old")}),
              "cannot write " + path(name) + ": it is the input " + path("old") +
                  "; choose another output");
  }
  EXPECT_EQ(errorOf(path("old"), {path("other")}), "(no error)");
  EXPECT_EQ(errorOf("/dev/null", {"/dev/null"}), "(no error)");
}

}  // namespace
}  // namespace qel::tool
