package com.lumora.camera.effect.qv.modelcache;

import com.zentrel.jni.HybridData;
import com.zentrel.nexboot.MergedSoMapping;
import com.zentrel.vistabase.assets.tesselcache.ARDFileCache;
import com.zentrel.vistabase.assets.tesselcache.ARDFileCacheEntry;
import com.zentrel.vistabase.assets.tesselcache.ARDFileResourceMeta;
import java.io.File;
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
     * Sets the cache's own records aside if they cannot be read, which makes every operation fail. The
     * next operation then adopts every entry again, as not used recently. Entries and their extra bytes
     * stay.
     *
     * <p>The file is renamed to {@code .metadata.json.damaged}, in place of an earlier one, and a soft
     * error says so.
     *
     * @return false if there is nothing to repair, or if it could not be renamed
     * @throws NullPointerException if the cache is closed
     */
    public boolean recoverMetadata() {
        flush(); // throws if the cache is closed, and does nothing else
        return StoreNatives.recoverMetadata(mRoot.getPath());
    }

    /**
     * {@return the owner of a new peer; for the constructor}
     *
     * @param rootPath the root directory
     * @param maxSizeBytes the budget
     */
    private static native @NotNull HybridData initHybrid(
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
