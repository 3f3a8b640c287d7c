package com.lumora.camera.effect.qv.modelcache;

import com.zentrel.jni.HybridData;
import com.zentrel.nexboot.MergedSoMapping;
import com.zentrel.vistabase.assets.tesselcache.ARDFileCache;
import com.zentrel.vistabase.assets.tesselcache.ARDFileCacheEntry;
import com.zentrel.vistabase.assets.tesselcache.ARDFileResourceMeta;
import java.io.File;
import java.util.Map;

/** The file cache on disk. */
public class FileCacheBasicImpl extends ARDFileCache {
    static {
        MergedSoMapping.load("liblmardcache-jni.so");
    }

    /**
     * Creates the root directory if it is missing. If that fails, the operations report it.
     *
     * @param maxSizeBytes the budget; {@link #commit} evicts the least recently used entries beyond
     */
    public FileCacheBasicImpl(String rootPath, long maxSizeBytes) {
        super(initHybrid(rootPath, maxSizeBytes));
        new File(rootPath).mkdirs();
    }

    public static native HybridData initHybrid(String rootPath, long maxSizeBytes);

    @Override
    public native ARDFileCacheEntry insertAndLock(String key);

    @Override
    public native ARDFileCacheEntry getCacheEntry(String key);

    @Override
    public native ARDFileCacheEntry getCacheEntryWithoutPromotion(String key);

    @Override
    public native boolean updateExtra(String key, byte[] extra);

    @Override
    public native Map.Entry<String, ARDFileResourceMeta>[] getAllMetas();

    @Override
    public native void unlock(String key);

    @Override
    public native boolean remove(String key);

    @Override
    public native void commit(String key);

    @Override
    public native void clear();

    @Override
    public native long getSize();

    @Override
    public native void flush();
}
