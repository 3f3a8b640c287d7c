package com.zentrel.vistabase.assets.tesselcache;

import com.zentrel.jni.HybridClassBase;
import com.zentrel.jni.HybridData;
import com.zentrel.nexboot.MergedSoMapping;
import java.nio.ByteBuffer;
import org.jetbrains.annotations.NotNull;

/** What the cache knows about an entry besides its path. */
public final class ARDFileResourceMeta extends HybridClassBase {
    static {
        MergedSoMapping.load("libardcache-jni.so");
    }

    /**
     * Made by native code.
     *
     * @param hybridData the owner of the native peer
     */
    public ARDFileResourceMeta(@NotNull HybridData hybridData) {
        super(hybridData);
    }

    /**
     * {@return the entry's extra bytes, in a new direct buffer that stays valid for as long as it,
     * or a view of it, is reachable}
     */
    public native @NotNull ByteBuffer getExtra();
}
