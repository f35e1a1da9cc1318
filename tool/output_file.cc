#include "output_file.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <system_error>
#include <utility>

#include "input_file.h"

namespace qel::tool {
namespace {

// Throws if the output is an input: the command would read its own results, or lose the input.
void refuseInput(const struct stat& output, const std::string& name,
                 const std::vector<std::string>& inputs) {
  if (!S_ISREG(output.st_mode)) return;
  for (const std::string& input : inputs) {
    const std::optional<struct stat> status = inputStatus(input);
    if (status.has_value() && status->st_dev == output.st_dev && status->st_ino == output.st_ino) {
      throw OutputError("cannot write " + name + ": it is the input " + inputName(input) +
                        "; choose another output");
    }
  }
}

// Returns the mode that open() gives a new file.
mode_t modeOfNewFile() {
  const mode_t mask = umask(0);
  umask(mask);
  return 0666 & ~mask;
}

}  // namespace

OutputFile::OutputFile(const std::string& path, const std::vector<std::string>& inputs)
    : name_(path == "-" ? "standard output" : path) {
  if (path.empty()) {
    throw OutputError("expected a file to write to, or - for standard output, found \"\"");
  }
  struct stat status = {};
  if (path == "-") {
    descriptor_ = STDOUT_FILENO;
    if (fstat(descriptor_, &status) == 0) refuseInput(status, name_, inputs);
    return;
  }
  const bool exists = stat(path.c_str(), &status) == 0;
  if (exists) refuseInput(status, name_, inputs);
  if (exists && !S_ISREG(status.st_mode)) {
    descriptor_ = open(path.c_str(), O_WRONLY | O_CLOEXEC);
    if (descriptor_ < 0) fail();
    return;
  }
  openTemporary(path);
  // A file system without modes may refuse this. The file is usable without.
  [[maybe_unused]] const int changed =
      fchmod(descriptor_, exists ? status.st_mode & 07777 : modeOfNewFile());
}

OutputFile::~OutputFile() {
  if (!temporary_.empty()) unlink(temporary_.c_str());
  if (descriptor_ > STDOUT_FILENO) close(descriptor_);
}

void OutputFile::openTemporary(const std::string& path) {
  // If the path is a link, the file that it refers to is replaced, not the link.
  std::error_code error;
  const std::filesystem::path target = std::filesystem::weakly_canonical(path, error);
  if (error || !target.has_filename()) {
    errno = error ? error.value() : EISDIR;
    fail();
  }
  target_ = target.string();
  std::string name = std::filesystem::path(target_).replace_filename(".qel-purchase-XXXXXX");
  descriptor_ = mkostemp(name.data(), O_CLOEXEC);
  if (descriptor_ < 0) fail();
  temporary_ = name;
}

void OutputFile::fail() const {
  throw OutputError("cannot write " + name_ + ": " + std::generic_category().message(errno));
}

void OutputFile::write(std::string_view text) {
  while (!text.empty()) {
    const ssize_t count = ::write(descriptor_, text.data(), text.size());
    if (count >= 0) {
      text.remove_prefix(static_cast<std::size_t>(count));
    } else if (errno == EAGAIN) {
      // The descriptor is non-blocking, and its reader is slow.
      pollfd wait = {.fd = descriptor_, .events = POLLOUT, .revents = 0};
      poll(&wait, 1, -1);
    } else if (errno != EINTR) {
      fail();
    }
  }
}

void OutputFile::commit() {
  if (temporary_.empty()) return;
  // Some file systems report a full disk only here.
  if (close(std::exchange(descriptor_, -1)) != 0) fail();
  if (rename(temporary_.c_str(), target_.c_str()) != 0) fail();
  temporary_.clear();
}

}  // namespace qel::tool
