#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "store/StoreRoot.h"

namespace zentrel::vistabase::ardelivery {

/// What lies below a root: contents by paths. Those of directories end with a slash.
using Image = std::map<std::string, std::string>;

constexpr const char* kRoot = "/root";  ///< Of every simulated disk.

/// A disk in memory that knows what has been synced, and so what a power cut may leave: of each
/// file its last synced bytes and, of what was written since, anything; of the changes of names in
/// a directory since its last sync, any.
class SimulatedDisk {
 public:
  /// Everything in the image lasts already.
  explicit SimulatedDisk(const Image& image = {});

  /// Opens this disk, whatever the root is called. Digests are OpenSSL's.
  StoreEnvironment environment();

  /// Called before each operation, with its name and that of the file.
  std::function<void(std::string_view call, const std::string& name)> hook = [](auto, auto&) {};
  /// Has the next such operation fail.
  void failOnce(const std::string& call, const std::string& name, int error);

  std::int64_t free = std::int64_t{1} << 40;  ///< Bytes. Not used up by writing.
  std::int64_t granularity = 1;               ///< Of dates, in nanoseconds.
  bool isLocked = false;
  bool isDeleted = false;  ///< The root has no name any more.

  Image now() const;
  /// Calls `take` with what a power cut may leave now: of up to `mostChanges` changes each subset,
  /// with written bytes kept, lost or torn (the second half missing or zero); of more, each
  /// beginning, and each single one missing or alone. Returns how many combinations there were that
  /// were not tried.
  std::uint64_t forEachPowerCut(std::size_t mostChanges,
                                const std::function<void(const Image&)>& take) const;

  struct Node;
  using Names = std::map<std::string, std::shared_ptr<Node>>;
  struct Node {
    bool isDirectory = false;
    std::string bytes, syncedBytes;
    Names names, syncedNames;
    std::int64_t modified = 0, changed = 0;
    std::uint64_t inode = 0;
  };
  /// A change that is not certain yet. A rename has both directories, a written file none.
  struct Change {
    std::shared_ptr<Node> node;
    std::shared_ptr<Node> from = {};
    std::string fromName = {};
    std::shared_ptr<Node> to = {};
    std::string toName = {};

    bool isWrite() const { return !from && !to; }
  };

  // For the directories and files that are open.

  std::shared_ptr<Node> newNode(bool isDirectory);
  FileStatus statusOf(const Node& node) const;
  void changeNames(Change change);
  void noteWrite(const std::shared_ptr<Node>& node);
  void syncFile(const std::shared_ptr<Node>& node);
  void syncDirectory(const std::shared_ptr<Node>& node);

 private:
  Image imageAfter(const std::vector<int>& choices) const;

  std::uint64_t device_;
  std::uint64_t inodes_ = 0;
  std::int64_t clock_ = 1;
  std::shared_ptr<Node> root_;
  std::vector<Change> pending_;
};

}  // namespace zentrel::vistabase::ardelivery
