#pragma once

#include <stdlib.h>

#include <boost/filesystem/directory.hpp>
#include <boost/filesystem/operations.hpp>
#include <cstdio>
#include <memory>
#include <string>

/// How many files this process has open.
inline std::ptrdiff_t openDescriptors() {
  return std::distance(boost::filesystem::directory_iterator("/proc/self/fd"), {});
}

/// A directory of its own for a test, removed with everything in it. Of a kind that 32-bit Android
/// has: <fstream> and <filesystem> take API 24 there.
class TemporaryDirectory {
 public:
  TemporaryDirectory() {
    std::string name = (boost::filesystem::temp_directory_path() / "modelcache-XXXXXX").string();
    path_ = ::mkdtemp(name.data());
  }
  ~TemporaryDirectory() { boost::filesystem::remove_all(path_); }

  std::string path() const { return path_.string(); }
  std::string operator/(const std::string& name) const { return (path_ / name).string(); }

  void write(const std::string& name, const std::string& content) const {
    boost::filesystem::create_directories((path_ / name).parent_path());
    const File file(std::fopen((*this / name).c_str(), "wb"), &std::fclose);
    file == nullptr ? 0 : std::fwrite(content.data(), 1, content.size(), file.get());
  }
  std::string read(const std::string& name) const {
    std::string content;
    const File file(std::fopen((*this / name).c_str(), "rb"), &std::fclose);
    for (int byte = 0; file != nullptr && (byte = std::getc(file.get())) != EOF;) {
      content += static_cast<char>(byte);
    }
    return content;
  }
  bool has(const std::string& name) const { return boost::filesystem::exists(path_ / name); }

 private:
  using File = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;
  boost::filesystem::path path_;
};
