#pragma once

#include <atomic>
#include <memory>
#include <stdexcept>
#include <utility>

#include "platform/zentreljni/Environment.h"

namespace zentrel::jni {

/// The base of every native peer. A peer is owned by a managed object and by each call that is
/// inside it; the last of them destroys it through this destructor, on its own thread or on the
/// collector's.
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

/// Ends a call's share of a peer.
struct Unpin {
  void operator()(HybridBase* peer) const noexcept;
};

/// A peer for the time of a call. It outlives the release of its managed object by another thread.
template <class Peer>
using Pinned = std::unique_ptr<Peer, Unpin>;

/// The managed com.zentrel.jni.HybridData, owner of a native peer.
struct HybridData {
  /// A new HybridData that owns `peer`. If it cannot be made, the peer is deleted.
  static LocalRef<jobject> own(std::unique_ptr<HybridBase> peer);

  /// The peer of a managed object that derives from com.zentrel.jni.HybridClassBase and is not
  /// null. Throws java.lang.NullPointerException when the object was released.
  static Pinned<HybridBase> peerOf(jobject self);

  /// Registers the natives of the managed class. Called once, by `initialize`.
  static void registerNatives();

 private:
  static Pinned<HybridBase> pin(jobject destructor);
  static void JNICALL deleteNative(JNIEnv* env, jclass type, jlong pointer) noexcept;
};

/// The peer of a managed hybrid object, which must be a `Peer`; std::invalid_argument otherwise.
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
