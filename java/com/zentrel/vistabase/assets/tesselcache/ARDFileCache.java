package com.zentrel.vistabase.assets.tesselcache;

import com.zentrel.jni.HybridClassBase;
import com.zentrel.jni.HybridData;
import java.util.Map;
import org.jetbrains.annotations.NotNull;
import org.jetbrains.annotations.Nullable;

/**
 * Files and directories under one root directory, each under a string key, within a byte budget.
 *
 * <p>A writer calls {@link #insertAndLock}, writes the content at the returned path, then calls
 * {@link #commit} and {@link #unlock}. A reader calls {@link #getCacheEntry} and opens the returned
 * path.
 *
 * <p>A failure of the disk or of the cache's own files is reported to the native soft-error sink
 * and answered with a neutral result: null, false, 0 or an empty array. A null argument throws
 * NullPointerException, and so does any call on a released object.
 *
 * <p>One thread at a time, also across the model caches that share this cache: a call
 * while another thread is inside throws IllegalStateException and does nothing. Two caches over one
 * root are not coordinated.
 */
public abstract class ARDFileCache extends HybridClassBase {
    /**
     * For a subclass, with its peer.
     *
     * @param hybridData the owner of the native peer
     */
    protected ARDFileCache(@NotNull HybridData hybridData) {
        super(hybridData);
    }

    /**
     * Records the key and returns where to write its content.
     *
     * @param key the key of the entry
     * @return where to write; null after a failure
     */
    public abstract @Nullable ARDFileCacheEntry insertAndLock(@NotNull String key);

    /**
     * {@return the entry, which is promoted and so evicted later, or null if it is not cached}
     *
     * @param key the key of the entry
     */
    public abstract @Nullable ARDFileCacheEntry getCacheEntry(@NotNull String key);

    /**
     * {@return the entry, or null if it is not cached}
     *
     * @param key the key of the entry
     */
    public abstract @Nullable ARDFileCacheEntry getCacheEntryWithoutPromotion(@NotNull String key);

    /**
     * Replaces the entry's extra bytes.
     *
     * @param key the key of the entry
     * @param extra any bytes
     * @return false if the key is not recorded
     */
    public abstract boolean updateExtra(@NotNull String key, @NotNull byte[] extra);

    /**
     * All entries that have extra bytes, by key. A key that holds one of {@code " * / : < > ? | \}
     * is returned as its file is named: with a percent sign before that character.
     *
     * @return the entries, each with a native peer of its own
     */
    public abstract @NotNull Map.Entry<String, ARDFileResourceMeta>[] getAllMetas();

    /**
     * Ends the writing of an entry.
     *
     * @param key the key of the entry
     */
    public abstract void unlock(@NotNull String key);

    /**
     * Deletes the entry.
     *
     * @param key the key of the entry
     * @return false if there was none
     */
    public abstract boolean remove(@NotNull String key);

    /**
     * Measures what was written for the key, then evicts old entries until the rest fits the budget.
     *
     * @param key the key of the entry
     */
    public abstract void commit(@NotNull String key);

    /** Deletes the root directory with everything in it. Create it again before the next use. */
    public abstract void clear();

    /** {@return the sum of the recorded sizes in bytes} */
    public abstract long getSize();

    /** Writes out extra bytes that an implementation holds back. */
    public abstract void flush();
}
