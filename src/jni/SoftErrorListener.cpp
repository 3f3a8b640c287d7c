#include "jni/SoftErrorListener.h"

#include <atomic>

#include "platform/softerror/softerror.h"
#include "platform/zentreljni/Lookup.h"
#include "platform/zentreljni/ManagedData.h"

namespace zentrel::vistabase::ardelivery {
namespace {

std::atomic<JavaVM*> javaVm{nullptr};

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

void observe(const softerror::Report& report) {
  void* current = nullptr;
  if (javaVm.load()->GetEnv(&current, JNI_VERSION_1_6) != JNI_OK) {
    return;
  }
  auto* const env = static_cast<JNIEnv*>(current);
  const jni::JniEnvCacher cacher(env);
  const jni::LocalRef<jthrowable> pending(env->ExceptionOccurred());
  env->ExceptionClear();
  try {
    dispatch(report);
  } catch (...) {
    // The managed class may be missing, or memory. The native sink has the report.
  }
  env->ExceptionClear();
  if (pending) {
    env->Throw(pending.get());
  }
}

}  // namespace

void listenToSoftErrors(JavaVM* vm) noexcept {
  javaVm = vm;
  softerror::setObserver(&observe);
}

}  // namespace zentrel::vistabase::ardelivery
