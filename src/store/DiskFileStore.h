#pragma once

#include <memory>
#include <string>
#include <vector>

#include "store/FileStore.h"
#include "store/SingleFlight.h"
#include "store/StoreRoot.h"

namespace zentrel::vistabase::ardelivery {

/// A FileStore over a StoreRoot, which its writers share.
class DiskFileStore final : public FileStore {
 public:
  static std::unique_ptr<FileStore> open(const std::string& root, std::int64_t maxSizeBytes,
                                         const StoreEnvironment& environment);

  explicit DiskFileStore(std::shared_ptr<StoreRoot> root);
  DiskFileStore(const DiskFileStore&) = delete;
  DiskFileStore& operator=(const DiskFileStore&) = delete;
  ~DiskFileStore() override;

  std::optional<std::string> get(const std::string& key) override;
  std::unique_ptr<EntryWriter> write(const std::string& key) override;
  std::unique_ptr<EntryWriter> write(const std::string& key, std::int64_t sizeBytes,
                                     const std::string& sha256) override;
  std::string getOrFetch(const std::string& key, const Fetch& fetch) override;
  std::string getOrFetch(const std::string& key, std::int64_t sizeBytes, const std::string& sha256,
                         const Fetch& fetch) override;
  bool remove(const std::string& key) override;
  void clear() override;
  std::optional<BytesVector> extra(const std::string& key) override;
  bool setExtra(const std::string& key, const BytesVector& extra) override;
  std::vector<std::string> keys() override;
  std::int64_t size() override;
  void setMaxSizeBytes(std::int64_t bytes) override;
  void close() override;

 private:
  /// Shared with the writers, which may outlive the store.
  struct State;

  const std::shared_ptr<State> state_;
  SingleFlight flights_;
};

}  // namespace zentrel::vistabase::ardelivery
