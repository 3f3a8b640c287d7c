#pragma once

#include <atomic>
#include <memory>
#include <stdexcept>

#include "platform/zentreljni/Environment.h"

namespace zentrel::jni {

/// The base of every native peer. A peer is owned jointly by its managed object and by each call in
/// progress on it; the last owner destroys it, on that owner's thread or on the collector's.
class HybridBase {
 public:
  HybridBase() = default;
  HybridBase(const HybridBase&) = delete;
  HybridBase& operator=(const HybridBase&) = delete;
  virtual ~HybridBase() = default;

 private:
  friend struct HybridData;
  friend struct Unpin;
  std::atomic<int> owners_{1};
};

/// Releases a call's ownership of a peer.
struct Unpin {
  void operator()(HybridBase* peer) const noexcept;
};

/// A peer, kept alive during a call even if another thread releases its managed object.
template <class Peer>
using Pinned = std::unique_ptr<Peer, Unpin>;

/// The managed com.zentrel.jni.HybridData, which owns a native peer.
struct HybridData {
  /// Creates a HybridData that owns `peer`. Deletes the peer if that fails.
  static LocalRef<jobject> own(std::unique_ptr<HybridBase> peer);

  /// Returns the peer of a managed object, which derives from com.zentrel.jni.HybridClassBase and
  /// is not null. Throws java.lang.NullPointerException if the object was released.
  static Pinned<HybridBase> peerOf(jobject self);

  /// Registers the class's native methods. Called once, by `initialize`.
  static void registerNatives();

 private:
  static Pinned<HybridBase> pin(jobject destructor);
  static void JNICALL deleteNative(JNIEnv* env, jclass type, jlong pointer) noexcept;
};

/// Returns the peer of a managed hybrid object. Throws std::invalid_argument if it is not a `Peer`.
template <class Peer>
Pinned<Peer> peerOf(jobject self) {
  Pinned<HybridBase> any = HybridData::peerOf(self);
  Pinned<Peer> peer(dynamic_cast<Peer*>(any.get()));
  if (!peer) {
    throw std::invalid_argument("the managed object has a native peer of another kind");
  }
  static_cast<void>(any.release());
  return peer;
}

}  // namespace zentrel::jni
