#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "delivery/FileCache/recoverMetadata.h"
#include "delivery/FileNames.h"
#include "jni/JavaDigest.h"
#include "jni/NativeMethods.h"
#include "jni/SnapshotPublisher.h"
#include "jni/StoreHandles.h"
#include "jni/mergedLibraries.h"
#include "jni/storeConvert.h"
#include "jni/storeExceptions.h"
#include "platform/softerror/softerror.h"
#include "platform/zentreljni/Lookup.h"
#include "store/DiskFileStore.h"
#include "store/DiskModelStore.h"
#include "store/PosixDisk.h"

namespace zentrel::vistabase::ardelivery {
namespace {

using Handle = std::int64_t;
using Strings = std::vector<std::string>;
using Numbers = std::vector<std::int64_t>;

StoreHandles& handles() {
  return StoreHandles::instance();
}

StoreEnvironment environment() {
  return {&openPosixRoot, &newJavaDigest};
}

/// Calls a member function of a store, an update or a writer by its handle.
template <auto Member, class Signature = decltype(Member)>
struct HandleCall;

template <auto Member, class T, class Result, class... Arguments>
struct HandleCall<Member, Result (T::*)(Arguments...)> {
  static Result call(Handle handle, Arguments... arguments) {
    return (*handles().get<T>(handle).*Member)(arguments...);
  }
};

template <auto Member, class T, class Result, class... Arguments>
struct HandleCall<Member, Result (T::*)(Arguments...) const>
    : HandleCall<Member, Result (T::*)(Arguments...)> {};

void checkCapability(const std::string& capability, const Strings& types) {
  Capability::of(capability, types);
}

Handle openModels(jobject store, const std::string& root, const std::string& capability,
                  const Strings& types, std::int64_t maxSizeBytes) {
  const auto publisher = std::make_shared<SnapshotPublisher>(store);
  return handles().add(
      DiskModelStore::open(root, Capability::of(capability, types), maxSizeBytes, environment(),
                           [publisher](const Snapshot& now) { publisher->publish(now); }));
}

Handle begin(Handle store, std::int32_t version, const Strings& types, const Numbers& sizes,
             const Strings& digests, bool isActiveGivenUp) {
  std::vector<ModelFile> files;
  for (std::size_t i = 0; i < types.size(); ++i) {
    files.emplace_back(types[i], sizes.at(i), digests.at(i));
  }
  return handles().add(handles().get<ModelStore>(store)->begin(
                           version, files, isActiveGivenUp ? Room::GiveUpActive : Room::KeepActive),
                       store);
}

std::int64_t sizeBytes(Handle store) {
  const auto models = handles().find<ModelStore>(store);
  return models ? models->sizeBytes() : handles().get<FileStore>(store)->size();
}

void setMaxSizeBytes(Handle store, std::int64_t bytes) {
  if (const auto models = handles().find<ModelStore>(store)) {
    models->setMaxSizeBytes(bytes);
  } else {
    handles().get<FileStore>(store)->setMaxSizeBytes(bytes);
  }
}

Handle writeModel(Handle update, const std::string& type, std::int64_t sizeBytes,
                  const std::string& sha256) {
  return handles().add(handles().get<Update>(update)->write({type, sizeBytes, sha256}), update);
}

void cancel(Handle update) {
  if (const auto running = handles().find<Update>(update)) {
    running->cancel();
  }
}

Handle openFiles(const std::string& root, std::int64_t maxSizeBytes) {
  return handles().add(DiskFileStore::open(root, maxSizeBytes, environment()));
}

Handle write(Handle store, const std::string& key) {
  return handles().add(handles().get<FileStore>(store)->write(key), store);
}

Handle writeKnown(Handle store, const std::string& key, std::int64_t sizeBytes,
                  const std::string& sha256) {
  return handles().add(handles().get<FileStore>(store)->write(key, sizeBytes, sha256), store);
}

void append(Handle writer, jbyteArray bytes, std::int32_t offset, std::int32_t length) {
  const auto out = handles().get<EntryWriter>(writer);
  constexpr std::int32_t chunk = 1 << 16;
  std::vector<jbyte> buffer(static_cast<std::size_t>(std::clamp(length, 0, chunk)));
  while (length > 0) {
    const std::int32_t count = std::min(length, chunk);
    jni::environment()->GetByteArrayRegion(bytes, offset, count, buffer.data());
    jni::throwIfPending();
    out->write(buffer.data(), static_cast<std::size_t>(count));
    offset += count;
    length -= count;
  }
}

/// Closes whatever the handle refers to; does nothing if it is already closed.
void close(Handle handle) {
  if (const auto models = handles().find<ModelStore>(handle)) {
    models->close();
  } else if (const auto files = handles().find<FileStore>(handle)) {
    files->close();
  } else if (const auto update = handles().find<Update>(handle)) {
    update->close();
  } else if (const auto writer = handles().find<EntryWriter>(handle)) {
    writer->close();
  }
  handles().remove(handle);
}

/// Returns false also if the file cannot be inspected or renamed.
bool recover(const std::string& root) {
  bool isSetAside = false;
  try {
    isSetAside = recoverMetadata(root) == MetadataRecovery::SetAside;
  } catch (const std::exception&) {
    return false;
  }
  if (isSetAside) {
    softerror::printSoftError(
        "jni/StoreBindings", "recoverMetadata", __LINE__, softerror::Severity::Recoverable,
        "modelcache", "set %s/%s aside as %s", root.c_str(), kMetadataName, kDamagedMetadataName);
  }
  return isSetAside;
}

constexpr char kRoot[] = "root";
constexpr char kCapability[] = "capability";
constexpr char kTypes[] = "types";
constexpr char kMaxSizeBytes[] = "maxSizeBytes";
constexpr char kStore[] = "store";
constexpr char kVersion[] = "version";
constexpr char kVersions[] = "versions";
constexpr char kSizes[] = "sizes";
constexpr char kDigests[] = "digests";
constexpr char kIsActiveGivenUp[] = "isActiveGivenUp";
constexpr char kUpdate[] = "update";
constexpr char kType[] = "type";
constexpr char kSizeBytes[] = "sizeBytes";
constexpr char kSha256[] = "sha256";
constexpr char kKey[] = "key";
constexpr char kExtra[] = "extra";
constexpr char kWriter[] = "writer";
constexpr char kBytes[] = "bytes";
constexpr char kOffset[] = "offset";
constexpr char kLength[] = "length";
constexpr char kHandle[] = "handle";

template <auto Function, const char*... Names>
void* const storeNative = translatedNative<&translateStoreException, Function, Names...>;

template <auto Member, const char*... Names>
void* const memberNative = storeNative<&HandleCall<Member>::call, Names...>;

#define MODEL_STORE "Lcom/lumora/camera/effect/qv/modelcache/ModelStore;"
#define STRING "Ljava/lang/String;"
#define STRINGS "[Ljava/lang/String;"
#define PARTS "[Ljava/lang/Object;"

}  // namespace

void registerStoreNatives() {
  jni::registerNatives(
      kStoreNativesClass,
      {
          {"checkCapability", "(" STRING STRINGS ")V",
           storeNative<&checkCapability, kCapability, kTypes>},
          {"openModels", "(" MODEL_STORE STRING STRING STRINGS "J)J",
           storeNative<&openModels, kStore, kRoot, kCapability, kTypes, kMaxSizeBytes>},
          {"begin", "(JI" STRINGS "[J" STRINGS "Z)J",
           storeNative<&begin, kStore, kVersion, kTypes, kSizes, kDigests, kIsActiveGivenUp>},
          {"activate", "(JI)V", memberNative<&ModelStore::activate, kStore, kVersion>},
          {"deactivate", "(J)V", memberNative<&ModelStore::deactivate, kStore>},
          {"trimExcept", "(J[I)V", memberNative<&ModelStore::trimExcept, kStore, kVersions>},
          {"verify", "(J)" PARTS, memberNative<&ModelStore::verify, kStore>},
          {"files", "(JI)" PARTS, memberNative<&ModelStore::files, kStore, kVersion>},
          {"sizeBytes", "(J)J", storeNative<&sizeBytes, kStore>},
          {"setMaxSizeBytes", "(JJ)V", storeNative<&setMaxSizeBytes, kStore, kBytes>},
          {"missing", "(J)" PARTS, memberNative<&Update::missing, kUpdate>},
          {"writeModel", "(J" STRING "J" STRING ")J",
           storeNative<&writeModel, kUpdate, kType, kSizeBytes, kSha256>},
          {"activateUpdate", "(J)V", memberNative<&Update::activate, kUpdate>},
          {"totalBytes", "(J)J", memberNative<&Update::totalBytes, kUpdate>},
          {"remainingBytes", "(J)J", memberNative<&Update::remainingBytes, kUpdate>},
          {"cancel", "(J)V", storeNative<&cancel, kUpdate>},
          {"openFiles", "(" STRING "J)J", storeNative<&openFiles, kRoot, kMaxSizeBytes>},
          {"get", "(J" STRING ")" STRING, memberNative<&FileStore::get, kStore, kKey>},
          {"write", "(J" STRING ")J", storeNative<&write, kStore, kKey>},
          {"writeKnown", "(J" STRING "J" STRING ")J",
           storeNative<&writeKnown, kStore, kKey, kSizeBytes, kSha256>},
          {"remove", "(J" STRING ")Z", memberNative<&FileStore::remove, kStore, kKey>},
          {"clear", "(J)V", memberNative<&FileStore::clear, kStore>},
          {"extra", "(J" STRING ")[B", memberNative<&FileStore::extra, kStore, kKey>},
          {"setExtra", "(J" STRING "[B)Z",
           memberNative<&FileStore::setExtra, kStore, kKey, kExtra>},
          {"keys", "(J)" STRINGS, memberNative<&FileStore::keys, kStore>},
          {"offset", "(J)J", memberNative<&EntryWriter::offset, kWriter>},
          {"append", "(J[BII)V", storeNative<&append, kWriter, kBytes, kOffset, kLength>},
          {"restart", "(J)V", memberNative<&EntryWriter::restart, kWriter>},
          {"commit", "(J)V", memberNative<&EntryWriter::commit, kWriter>},
          {"close", "(J)V", storeNative<&close, kHandle>},
          {"recoverMetadata", "(" STRING ")Z", storeNative<&recover, kRoot>},
      });
  static const jclass type = jni::findClassStatic(kStoreNativesClass);
  JNIEnv* const env = jni::environment();
  const jfieldID field = env->GetStaticFieldID(type, "sRegistered", "Z");
  jni::throwIfPending();
  env->SetStaticBooleanField(type, field, JNI_TRUE);
}

}  // namespace zentrel::vistabase::ardelivery
