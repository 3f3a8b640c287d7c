#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <typeindex>
#include <typeinfo>
#include <utility>

#include "store/StoreError.h"

namespace zentrel::vistabase::ardelivery {

/// Maps the handles that managed code holds to stores, updates and writers. Handles are never
/// reused. A call shares ownership of its object, so that nothing is freed during it. Thread-safe.
class StoreHandles {
 public:
  /// The handles of this process.
  static StoreHandles& instance();

  /// Returns a handle for an object, which is removed along with `owner` unless that is 0.
  template <class T>
  std::int64_t add(std::unique_ptr<T> object, std::int64_t owner = 0) {
    return addAny({std::shared_ptr<T>(std::move(object)), typeid(T), owner});
  }

  /// Returns the object. Throws UsageError if it was closed or has another type.
  template <class T>
  std::shared_ptr<T> get(std::int64_t handle) {
    std::shared_ptr<T> object = find<T>(handle);
    if (!object) {
      throw UsageError("already closed");
    }
    return object;
  }
  /// The same, but returns null.
  template <class T>
  std::shared_ptr<T> find(std::int64_t handle) {
    return std::static_pointer_cast<T>(findAny(handle, typeid(T)));
  }

  /// Removes an object, and those that it owns.
  void remove(std::int64_t handle);

 private:
  struct Entry {
    std::shared_ptr<void> object;
    std::type_index type;
    std::int64_t owner;
  };

  std::int64_t addAny(Entry entry);
  std::shared_ptr<void> findAny(std::int64_t handle, std::type_index type);

  std::mutex mutex_;
  std::map<std::int64_t, Entry> entries_;
  std::int64_t last_ = 0;
};

}  // namespace zentrel::vistabase::ardelivery
