#pragma once

#include <memory>
#include <stdexcept>

#include "platform/zentreljni/HybridBase.h"
#include "platform/zentreljni/LocalRef.h"

namespace zentrel::jni {

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
