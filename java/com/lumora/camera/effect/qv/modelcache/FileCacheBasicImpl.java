package com.lumora.camera.effect.qv.modelcache;

import com.zentrel.jni.HybridData;
import com.zentrel.nexboot.MergedSoMapping;
import com.zentrel.vistabase.assets.tesselcache.ARDFileCache;
import com.zentrel.vistabase.assets.tesselcache.ARDFileCacheEntry;
import com.zentrel.vistabase.assets.tesselcache.ARDFileResourceMeta;
import java.io.File;
import java.io.IOException;
import java.util.Arrays;
import java.util.Map;
import org.jetbrains.annotations.NotNull;
import org.jetbrains.annotations.Nullable;

/** The file cache on disk. */
public class FileCacheBasicImpl extends ARDFileCache {
    static {
        MergedSoMapping.load("liblmardcache-jni.so");
    }

    private final File mRoot;

    /**
     * Creates the root directory if it is missing. If that fails, the operations report it.
     *
     * @param rootPath the root directory
     * @param maxSizeBytes the budget; {@link #commit} evicts the least recently used entries beyond
     */
    public FileCacheBasicImpl(@NotNull String rootPath, long maxSizeBytes) {
        super(initHybrid(rootPath, maxSizeBytes));
        mRoot = new File(rootPath);
        mRoot.mkdirs();
    }

    /**
     * Sets the cache's own bookkeeping aside if it cannot be read, in which case every operation
     * fails: the next one then adopts every entry again, as not used recently. Entries and their
     * extra bytes stay.
     *
     * <p>What cannot be read is renamed to {@code .metadata.json.damaged}, in place of an earlier
     * one, and a soft error says so.
     *
     * @return false if there is nothing to mend, or if it could not be renamed
     * @throws NullPointerException if the cache is closed
     */
    public boolean recoverMetadata() {
        File metadata = new File(mRoot, "metadata.json");
        File aside = new File(mRoot, ".metadata.json.damaged");
        try {
            byte[] read = Snapshot.bytesOf(metadata);
            SoftErrors.Capture capture = SoftErrors.capture();
            String failure;
            try {
                getSize();
            } finally {
                failure = capture.end();
            }
            boolean damaged = read == null ? metadata.exists()
                    : failure != null && failure.startsWith("Error for getSize: Deserializing failed: '");
            if (damaged) {
                new Disk().rename(metadata, aside);
                if (read != null && !Arrays.equals(read, Snapshot.bytesOf(aside))) {
                    new Disk().rename(aside, metadata); // Somebody mended it in the meantime.
                    return false;
                }
                SoftErrors.report("recoverMetadata", "set " + metadata + " aside as " + aside);
            }
            return damaged;
        } catch (IOException readOnly) {
            return false;
        }
    }

    /**
     * {@return the owner of a new peer; for the constructor}
     *
     * @param rootPath the root directory
     * @param maxSizeBytes the budget
     */
    public static native @NotNull HybridData initHybrid(
            @NotNull String rootPath, long maxSizeBytes);

    @Override
    public native @Nullable ARDFileCacheEntry insertAndLock(@NotNull String key);

    @Override
    public native @Nullable ARDFileCacheEntry getCacheEntry(@NotNull String key);

    @Override
    public native @Nullable ARDFileCacheEntry getCacheEntryWithoutPromotion(@NotNull String key);

    @Override
    public native boolean updateExtra(@NotNull String key, @NotNull byte[] extra);

    @Override
    public native @NotNull Map.Entry<String, ARDFileResourceMeta>[] getAllMetas();

    @Override
    public native void unlock(@NotNull String key);

    @Override
    public native boolean remove(@NotNull String key);

    @Override
    public native void commit(@NotNull String key);

    @Override
    public native void clear();

    @Override
    public native long getSize();

    @Override
    public native void flush();
}
