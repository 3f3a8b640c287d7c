#pragma once

namespace zentrel::jni {

/// The base of every native peer. A peer is owned by a managed object, which destroys it through
/// this destructor, on the thread that releases the object or on the collector's.
class HybridBase {
 public:
  HybridBase() = default;
  HybridBase(const HybridBase&) = delete;
  HybridBase& operator=(const HybridBase&) = delete;
  virtual ~HybridBase() = default;
};

}  // namespace zentrel::jni
