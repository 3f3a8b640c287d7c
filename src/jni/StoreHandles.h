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

/// Stores, updates and writers, by the numbers under which managed code knows them. A number stands
/// for one object, and never for another one later. A call shares what it is inside of, so that
/// nothing is freed under it. Any thread.
class StoreHandles {
 public:
  /// The numbers of this process.
  static StoreHandles& instance();

  /// A number for an object that goes with `owner`, if that is not 0.
  template <class T>
  std::int64_t add(std::unique_ptr<T> object, std::int64_t owner = 0) {
    return addAny({std::shared_ptr<T>(std::move(object)), typeid(T), owner});
  }

  /// The object of a number; UsageError if it was closed, or is of another kind.
  template <class T>
  std::shared_ptr<T> get(std::int64_t handle) {
    std::shared_ptr<T> object = find<T>(handle);
    if (!object) {
      throw UsageError("closed already");
    }
    return object;
  }
  /// The same, or null.
  template <class T>
  std::shared_ptr<T> find(std::int64_t handle) {
    return std::static_pointer_cast<T>(findAny(handle, typeid(T)));
  }

  /// Forgets an object, and those that go with it.
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
