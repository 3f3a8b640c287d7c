#pragma once

#include <cstddef>
#include <string>

/// The system calls that the cache's steps come down to, on prepared paths and static buffers:
/// nothing is parsed, allocated or looked at, beyond what the next call needs.
namespace zentrel::vistabase::ardelivery::bench::calls {

void status(const std::string& path);
void size(const std::string& path);
void readFile(const std::string& path);
void listDirectory(const std::string& path);
/// Replaces the file by the first `length` bytes of `content`.
void writeFile(const std::string& path, const std::string& content, std::size_t length);
void remove(const std::string& path);
void removeMissing(const std::string& path);
void removeAll(const std::string& path);

}  // namespace zentrel::vistabase::ardelivery::bench::calls
