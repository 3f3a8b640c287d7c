package com.zentrel.vistabase.assets.modelcache.segmentation;

import com.zentrel.jni.HybridClassBase;
import com.zentrel.jni.HybridData;
import com.zentrel.nexboot.MergedSoMapping;
import com.zentrel.vistabase.assets.tesselcache.ARDFileCache;
import org.jetbrains.annotations.NotNull;

/**
 * Which cached files make up which version of the segmentation models. A version is complete when
 * both of its files are recorded and still cached; until then, its paths are all "".
 *
 * <p>Failures are thrown as {@link
 * com.zentrel.vistabase.common.exception.EffectsFrameworkException}. One thread at a time, also
 * across everything that shares the file cache: any other call throws IllegalStateException.
 */
public final class SegmentationModelCache extends HybridClassBase {
    static {
        MergedSoMapping.load("libsegmentation-model-cache-native-android.so");
    }

    /** @param fileCache where the files are; best used for this capability alone */
    public SegmentationModelCache(@NotNull ARDFileCache fileCache) {
        super(initHybrid(fileCache));
    }

    /**
     * {@return the owner of a new peer over the file cache; for the constructor}
     *
     * @param fileCache where the files are
     */
    private static native @NotNull HybridData initHybrid(@NotNull ARDFileCache fileCache);

    /**
     * {@return the path of "seg_init_net.pb", or ""}
     *
     * @param version the number of the version
     */
    public native @NotNull String getInitNetPath(int version);

    /**
     * {@return the path of "seg_predict_net.pb", or ""}
     *
     * @param version the number of the version
     */
    public native @NotNull String getPredictNetPath(int version);

    /**
     * Records a cached file as a model of the version.
     *
     * @param version the number of the version
     * @param cacheKey the file's key in the file cache
     * @param typeName which model it is: one of the file names above
     * @return false if the file cache does not hold the key
     */
    public native boolean addModelForVersionIfInCache(
            int version, @NotNull String cacheKey, @NotNull String typeName);

    /**
     * Deletes all other versions, with the files that the kept one does not share. Does nothing if
     * the version to keep is not recorded.
     *
     * @param version the number of the version to keep
     */
    public native void trimExceptVersion(int version);
}
