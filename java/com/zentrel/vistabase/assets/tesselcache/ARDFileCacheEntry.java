package com.zentrel.vistabase.assets.tesselcache;

import org.jetbrains.annotations.NotNull;

/** Where an entry is on disk. Only a path: it keeps nothing alive and unlocks nothing. */
public final class ARDFileCacheEntry {
    private final String mPath;

    /**
     * Made by native code.
     *
     * @param path the full path
     */
    public ARDFileCacheEntry(@NotNull String path) {
        mPath = path;
    }

    /** {@return the full path of the entry, a regular file or a directory} */
    public @NotNull String getPath() {
        return mPath;
    }

    @Override
    public @NotNull String toString() {
        return mPath;
    }
}
