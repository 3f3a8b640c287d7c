#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "store/OpenSslDigest.h"
#include "store/StoreRoot.h"

namespace zentrel::vistabase::ardelivery {

/// File contents by path below a root. The path of a directory ends with a slash.
using Image = std::map<std::string, std::string>;

inline std::string sha256(const std::string& bytes) {
  const auto digest = newOpenSslDigest();
  digest->update(bytes.data(), bytes.size());
  return digest->finish();
}

constexpr const char* kRoot = "/root";  ///< The root of every simulated disk.

/// A disk in memory that tracks what has been synced, and so knows what a power cut may leave: of a
/// file its last synced bytes and any part of what was written since; of the changes to a directory
/// since its last sync, any subset.
class SimulatedDisk {
 public:
  /// Everything in the image counts as synced.
  explicit SimulatedDisk(const Image& image = {});

  /// Opens this disk, whatever the path. Digests are OpenSSL's.
  StoreEnvironment environment();

  /// Called before each operation, with its name and the file's.
  std::function<void(std::string_view call, const std::string& name)> hook = [](auto, auto&) {};
  /// Makes the next such operation fail.
  void failOnce(const std::string& call, const std::string& name, int error);

  std::int64_t free = std::int64_t{1} << 40;  ///< Free bytes. Writing does not use them up.
  std::int64_t granularity = 1;               ///< Of modification times, in nanoseconds.
  bool isLocked = false;

  Image now() const;
  /// Calls `take` with what a power cut may leave now. Of up to `mostChanges` unsynced changes, it
  /// tries every subset, with written bytes kept, lost or torn (the second half missing or zero);
  /// of more, every prefix, and each one missing or alone. Returns the number of combinations not
  /// tried.
  std::uint64_t forEachPowerCut(std::size_t mostChanges,
                                const std::function<void(const Image&)>& take) const;

  struct Node;
  using NodePtr = std::shared_ptr<Node>;
  using Names = std::map<std::string, NodePtr>;
  struct Node {
    bool isDirectory = false;
    std::int64_t modified = 0, changed = 0;
    std::string bytes = {}, syncedBytes = {};
    Names names = {}, syncedNames = {};
  };
  /// An unsynced change: a write if it has no directory, a rename if it has two.
  struct Change {
    NodePtr node;
    NodePtr from = {};
    std::string fromName = {};
    NodePtr to = {};
    std::string toName = {};

    bool isWrite() const { return !from && !to; }
  };

  // For open files and directories.

  NodePtr newNode(bool isDirectory);
  FileStatus statusOf(const Node& node) const;
  void changeNames(const Change& change);
  void noteWrite(const NodePtr& node);
  void sync(const NodePtr& node);

 private:
  Image imageAfter(const std::vector<int>& choices) const;

  std::int64_t clock_ = 1;
  NodePtr root_;
  std::vector<Change> pending_;
};

}  // namespace zentrel::vistabase::ardelivery
