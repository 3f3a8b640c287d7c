#include "jni/storeExceptions.h"

#include "platform/zentreljni/Exceptions.h"
#include "platform/zentreljni/Lookup.h"
#include "platform/zentreljni/ManagedData.h"
#include "store/StoreError.h"

namespace zentrel::vistabase::ardelivery {
namespace {

void raise(const StoreError& error) {
  static const jni::JavaConstructor constructor(
      "com/lumora/camera/effect/qv/modelcache/StoreException",
      "(ILjava/lang/String;Ljava/lang/String;IJJJ)V");
  const StoreError::Room room = error.room().value_or(StoreError::Room{-1, -1, -1});
  const auto exception =
      constructor(static_cast<jint>(error.reason()), jni::make_jstring(error.what()).get(),
                  jni::make_jstring(error.path()).get(), static_cast<jint>(error.error()),
                  static_cast<jlong>(room.needed), static_cast<jlong>(room.budget),
                  static_cast<jlong>(room.free));
  jni::environment()->Throw(static_cast<jthrowable>(exception.get()));
}

void raiseStateException(const char* className, const UsageError& error) noexcept {
  try {
    jni::throwNewJavaException(className, error.what());
  } catch (...) {
    jni::translatePendingCppExceptionToJavaException();
  }
}

}  // namespace

void translateStoreException() noexcept {
  try {
    throw;
  } catch (const StoreError& error) {
    try {
      raise(error);
      return;
    } catch (...) {
      jni::translatePendingCppExceptionToJavaException();
    }
  } catch (const CancelledError& error) {
    raiseStateException("java/util/concurrent/CancellationException", error);
  } catch (const UsageError& error) {
    raiseStateException("java/lang/IllegalStateException", error);
  } catch (...) {
    jni::translatePendingCppExceptionToJavaException();
  }
}

}  // namespace zentrel::vistabase::ardelivery
