package com.lumora.camera.effect.qv.modelcache;

import com.zentrel.jni.HybridClassBase;
import com.zentrel.vistabase.assets.modelcache.facetracker.FacetrackerModelCache;
import com.zentrel.vistabase.assets.modelcache.segmentation.SegmentationModelCache;
import com.zentrel.vistabase.common.exception.EffectsFrameworkException;
import java.io.Closeable;
import java.io.File;
import java.io.IOException;
import java.util.Collections;
import java.util.Map;

/**
 * The records that the native caches keep of a store's root. They tell other readers of the root
 * what is there; the store itself does not depend on them, so that only {@link #require}, which comes
 * before anything is changed, fails over them. What fails later has been reported, and leaves them
 * to be written anew. Nothing native is loaded before it is needed. One thread at a time.
 */
final class NativeCache implements Closeable {

    private enum Step { RELOAD, ADOPT, REMOVE }

    private final File mRoot;
    private FileCacheBasicImpl mFiles;
    private boolean mCurrent = true;

    NativeCache(File root) {
        mRoot = root;
    }

    /** Whether the records are as they should be, as far as they were written here. */
    boolean isCurrent() {
        return mCurrent;
    }

    /** Has the records written anew on the next occasion. */
    void outdate() {
        mCurrent = false;
    }

    /** Has the records follow what lies on disk. */
    void reload() {
        run(Step.RELOAD, null);
    }

    /** Throws what keeps the records from following, if anything does. */
    void require(String name) throws IOException {
        String failure = failureOf(Step.RELOAD, null);
        if (failure != null) {
            throw new IOException(failure + ": " + new File(mRoot, name));
        }
    }

    /** Records a file that has become an entry. */
    void adopt(String name) {
        run(Step.ADOPT, name);
    }

    /**
     * Has the index follow a table.
     *
     * @param added the only version that the index does not have yet; null if that is not known
     */
    void index(Capability capability, VersionTable table, Version added) {
        boolean isAnew = added == null || !mCurrent;
        mCurrent = true;
        run(isAnew ? Step.REMOVE : Step.RELOAD, Entries.INDEX);
        SoftErrors.Capture capture = SoftErrors.capture();
        try {
            for (Version version
                    : isAnew ? table.versions() : Collections.singletonList(added)) {
                record(capability, version);
            }
        } catch (EffectsFrameworkException failure) {
            mCurrent = false;
            SoftErrors.report("index", failure.getMessage());
        } finally {
            mCurrent &= capture.end() == null;
        }
    }

    @Override
    public void close() {
        if (mFiles != null) {
            mFiles.close();
        }
    }

    private void record(Capability capability, Version version) {
        // Made for each version: one that could not write the index would go on from its own.
        try (HybridClassBase models = capability == Capability.FACE_TRACKING
                ? new FacetrackerModelCache(mFiles) : new SegmentationModelCache(mFiles)) {
            for (Map.Entry<ModelFile, String> file : version.names().entrySet()) {
                String type = file.getKey().type();
                boolean recorded = capability == Capability.FACE_TRACKING
                        ? ((FacetrackerModelCache) models).addModelForVersionIfInCache(
                                version.number(), file.getValue(), type)
                        : ((SegmentationModelCache) models).addModelForVersionIfInCache(
                                version.number(), file.getValue(), type);
                mCurrent &= recorded;
            }
        }
    }

    private void run(Step step, String name) {
        mCurrent &= failureOf(step, name) == null;
    }

    /** What fails in a step, which is tried again if damaged records could be set aside. */
    private String failureOf(Step step, String name) {
        String failure = tryOnce(step, name);
        return failure != null && mFiles.recoverMetadata() ? tryOnce(step, name) : failure;
    }

    private String tryOnce(Step step, String name) {
        if (mFiles == null) {
            // The store keeps the budget itself, in an order that depends on no clock.
            mFiles = new FileCacheBasicImpl(mRoot.getPath(), Long.MAX_VALUE);
        }
        SoftErrors.Capture capture = SoftErrors.capture();
        String failure;
        try {
            call(step, name);
        } finally {
            failure = capture.end();
        }
        return failure;
    }

    private void call(Step step, String name) {
        switch (step) {
            case ADOPT:
                mFiles.getCacheEntry(name); // which dates its last use
                mFiles.commit(name);
                mFiles.unlock(name);
                break;
            case REMOVE:
                mFiles.remove(name);
                break;
            default:
                mFiles.getSize();
        }
    }
}
