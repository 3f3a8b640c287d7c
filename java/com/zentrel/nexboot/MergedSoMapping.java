package com.zentrel.nexboot;

import org.jetbrains.annotations.NotNull;

/**
 * Loads the libraries that were merged into {@code libmodelcache.so}, by their former file names.
 */
public final class MergedSoMapping {
    private static final String MERGED_LIBRARY = "modelcache";

    private static boolean sMergedLibraryLoaded;

    private MergedSoMapping() {}

    /**
     * Loads {@code libmodelcache.so} from {@code java.library.path} if it has not been loaded yet, then
     * lets the former library register its natives. Loading a library again does nothing.
     *
     * @param libraryName file name of the former library, such as "libardcache-jni.so"
     * @throws UnsatisfiedLinkError if there is no such library or it cannot be loaded, each time
     */
    public static void load(@NotNull String libraryName) {
        String owner = ownerOf(libraryName);
        loadMergedLibrary();
        // Initialize the class that owns the natives first. Its initializer calls this method, too:
        // whoever needs both has to take the class's initialization lock before this one.
        initialize(owner);
        synchronized (MergedSoMapping.class) {
            if (invokeJniOnLoad(libraryName) != 0) {
                throw Failure.of("loading " + libraryName + " failed");
            }
        }
    }

    private static synchronized void loadMergedLibrary() {
        if (!sMergedLibraryLoaded) {
            try {
                System.loadLibrary(MERGED_LIBRARY);
            } catch (LinkageError failure) {
                throw Failure.of(System.mapLibraryName(MERGED_LIBRARY) + " cannot be loaded for "
                        + abi() + ": " + failure.getMessage());
            }
            sMergedLibraryLoaded = true;
        }
    }

    /** {@return the ABI, by the name that Android has for it} */
    private static String abi() {
        String machine = System.getProperty("os.arch");
        return machine.equals("aarch64") ? "arm64-v8a"
                : machine.startsWith("arm") ? "armeabi-v7a"
                : machine;
    }

    private static String ownerOf(String libraryName) {
        switch (libraryName) {
            case "libfacetracker-model-cache-native-android.so":
                return "com.zentrel.vistabase.assets.modelcache.facetracker.FacetrackerModelCache";
            case "libsegmentation-model-cache-native-android.so":
                return "com.zentrel.vistabase.assets.modelcache.segmentation"
                        + ".SegmentationModelCache";
            case "libardcache-jni.so":
                return "com.zentrel.vistabase.assets.tesselcache.ARDFileResourceMeta";
            case "liblmardcache-jni.so":
                return "com.lumora.camera.effect.qv.modelcache.FileCacheBasicImpl";
            default:
                throw Failure.of("no merged library is called " + libraryName);
        }
    }

    private static void initialize(String className) {
        try {
            Class.forName(className);
        } catch (ClassNotFoundException exception) {
            throw new NoClassDefFoundError(className);
        }
    }

    private static int invokeJniOnLoad(String libraryName) {
        switch (libraryName) {
            case "libfacetracker-model-cache-native-android.so":
                return Invoke_JNI_OnLoad.libfacetracker_model_cache_native_android_so();
            case "libsegmentation-model-cache-native-android.so":
                return Invoke_JNI_OnLoad.libsegmentation_model_cache_native_android_so();
            case "libardcache-jni.so":
                return Invoke_JNI_OnLoad.libardcache_jni_so();
            default:
                return Invoke_JNI_OnLoad.liblmardcache_jni_so();
        }
    }

    /** Separate, since a class is loaded together with the errors that it names: slow at startup. */
    private static final class Failure {
        static Error of(String message) {
            return new UnsatisfiedLinkError(message);
        }
    }

    /** The load functions, registered when {@code libmodelcache.so} is loaded. 0 is success. */
    static final class Invoke_JNI_OnLoad {
        private Invoke_JNI_OnLoad() {}

        static native int libfacetracker_model_cache_native_android_so();

        static native int libsegmentation_model_cache_native_android_so();

        static native int libardcache_jni_so();

        static native int liblmardcache_jni_so();
    }
}
