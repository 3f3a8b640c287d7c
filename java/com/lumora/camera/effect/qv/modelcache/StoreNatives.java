package com.lumora.camera.effect.qv.modelcache;

import com.zentrel.nexboot.MergedSoMapping;

/**
 * The stores' natives. Native objects are known by numbers, never 0; the number of a closed one throws
 * IllegalStateException. No static initializer: native code looks the class up while it is being loaded.
 */
final class StoreNatives {
    private StoreNatives() {}

    /**
     * To be called first. Says each time what is missing.
     *
     * @throws UnsatisfiedLinkError if the library or these natives are not there
     */
    static void load() {
        MergedSoMapping.load("liblmardcache-jni.so");
        if (!sRegistered) {
            throw Unregistered.error();
        }
    }

    /** Set by native code once it has registered the natives. */
    private static boolean sRegistered;

    /** Separate, since a class is loaded together with the errors that it names: slow at startup. */
    private static final class Unregistered {
        static Error error() {
            return new UnsatisfiedLinkError("the natives of " + StoreNatives.class.getName()
                    + " are not registered: was the app shrunken without the rules in"
                    + " META-INF/proguard?");
        }
    }

    /** Throws IllegalArgumentException for an invalid capability. */
    static native void checkCapability(String capability, String[] types);

    /** Calls {@link ModelStore#publish} of the store, now and after each change. */
    static native long openModels(ModelStore store, String root, String capability, String[] types,
            long maxSizeBytes) throws StoreException;
    static native long begin(long store, int version, String[] types, long[] sizes,
            String[] digests, boolean isActiveGivenUp) throws StoreException;
    static native void activate(long store, int version) throws StoreException;
    static native void deactivate(long store) throws StoreException;
    static native void trimExcept(long store, int[] versions) throws StoreException;
    /** Types, sizes and digests. */
    static native Object[] verify(long store) throws StoreException;
    /** Types, sizes, digests and paths. */
    static native Object[] files(long store, int version);

    /** Types, sizes and digests. */
    static native Object[] missing(long update);
    static native long writeModel(long update, String type, long sizeBytes, String sha256)
            throws StoreException;
    static native void activateUpdate(long update) throws StoreException;
    static native long totalBytes(long update);
    static native long remainingBytes(long update) throws StoreException;
    static native void cancel(long update);

    static native long openFiles(String root, long maxSizeBytes) throws StoreException;
    static native String get(long store, String key) throws StoreException;
    static native long write(long store, String key) throws StoreException;
    static native long writeKnown(long store, String key, long sizeBytes, String sha256)
            throws StoreException;
    static native boolean remove(long store, String key) throws StoreException;
    static native void clear(long store) throws StoreException;
    static native byte[] extra(long store, String key) throws StoreException;
    static native boolean setExtra(long store, String key, byte[] extra) throws StoreException;
    static native String[] keys(long store) throws StoreException;

    /** Of either kind of store. */
    static native long sizeBytes(long store) throws StoreException;
    static native void setMaxSizeBytes(long store, long bytes);

    static native long offset(long writer);
    static native void append(long writer, byte[] bytes, int offset, int length)
            throws StoreException;
    static native void restart(long writer) throws StoreException;
    static native void commit(long writer) throws StoreException;

    /** Closes the object, and those that belong to it. */
    static native void close(long handle);

    static native boolean recoverMetadata(String root);
}
