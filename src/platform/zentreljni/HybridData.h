#pragma once

#include <memory>
#include <stdexcept>

#include "platform/zentreljni/Environment.h"

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

/// The managed com.zentrel.jni.HybridData, owner of a native peer.
struct HybridData {
  /// A new HybridData that owns `peer`. If it cannot be made, the peer is deleted.
  static LocalRef<jobject> own(std::unique_ptr<HybridBase> peer);

  /// The peer of a managed object that derives from com.zentrel.jni.HybridClassBase and is not
  /// null. Throws java.lang.NullPointerException when the object was released.
  static HybridBase& peerOf(jobject self);

  /// Registers the natives of the managed class. Called once, by `initialize`.
  static void registerNatives();
};

/// The peer of a managed hybrid object, which must be a `Peer`; std::invalid_argument otherwise.
template <class Peer>
Peer& peerOf(jobject self) {
  auto* const peer = dynamic_cast<Peer*>(&HybridData::peerOf(self));
  if (peer == nullptr) {
    throw std::invalid_argument("the managed object has a native peer of another kind");
  }
  return *peer;
}

}  // namespace zentrel::jni
