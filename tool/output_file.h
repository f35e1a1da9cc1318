// Writes the output: to standard output, or to a file that appears only when it is whole.

#ifndef QEL_TOOL_OUTPUT_FILE_H_
#define QEL_TOOL_OUTPUT_FILE_H_

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace qel::tool {

// Why the output cannot be written, for people: "cannot write a.jsonl: No space left on device".
class OutputError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// A file is written under a temporary name in its folder, and gets its own name when it is whole.
// Whatever ends the command before, the file is absent, or what it was. A device or a pipe is
// written directly.
class OutputFile {
 public:
  // The path "-" is standard output. `inputs` are the paths of the inputs. Throws OutputError if
  // the file cannot be created, or is one of the inputs.
  OutputFile(const std::string& path, const std::vector<std::string>& inputs);

  // Removes the temporary file unless the output was committed.
  ~OutputFile();
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  // The path, or "standard output".
  const std::string& name() const { return name_; }

  // Returns whether nothing appears before `commit`.
  bool needsCommit() const { return !temporary_.empty(); }

  // Writes all of `text`. Waits for a slow reader. Throws OutputError.
  void write(std::string_view text);

  // Ends the output; gives the file its name. Throws OutputError.
  void commit();

 private:
  void openTemporary(const std::string& path);
  [[noreturn]] void fail() const;

  std::string name_;
  int descriptor_ = -1;
  // Where the file goes, and its name until then. Empty if it is written directly.
  std::string target_;
  std::string temporary_;
};

}  // namespace qel::tool

#endif  // QEL_TOOL_OUTPUT_FILE_H_
