#include "jni/SoftErrorListener.h"

#include "platform/softerror/softerror.h"
#include "platform/zentreljni/Lookup.h"
#include "platform/zentreljni/ManagedData.h"

namespace zentrel::vistabase::ardelivery {
namespace {

void dispatch(const softerror::Report& report) {
  using jni::make_jstring;
  static const jclass type =
      jni::findClassStatic("com/lumora/camera/effect/qv/modelcache/SoftErrors");
  static const jmethodID method = jni::findStaticMethod(
      type, "dispatch",
      "(Ljava/lang/String;Ljava/lang/String;IILjava/lang/String;Ljava/lang/String;)V");
  const auto file = make_jstring(report.file);
  const auto function = make_jstring(report.function);
  const auto category = make_jstring(report.category);
  const auto message = make_jstring(report.message);
  jni::environment()->CallStaticVoidMethod(type, method, file.get(), function.get(), report.line,
                                           static_cast<jint>(report.severity), category.get(),
                                           message.get());
}

void observe(const softerror::Report& report, void* vm) {
  void* current = nullptr;
  if (static_cast<JavaVM*>(vm)->GetEnv(&current, JNI_VERSION_1_6) != JNI_OK) {
    return;
  }
  const jni::JniEnvCacher cacher(static_cast<JNIEnv*>(current));
  const jni::ScopedPendingClear cleared;
  try {
    dispatch(report);
  } catch (...) {
    // The managed class may be missing, or memory exhausted. The native sink has the report.
  }
}

}  // namespace

void listenToSoftErrors(JavaVM* vm) noexcept {
  softerror::setObserver({&observe, vm});
}

}  // namespace zentrel::vistabase::ardelivery
