package com.lumora.camera.effect.qv.modelcache;

import java.io.IOException;
import java.io.OutputStream;
import org.jetbrains.annotations.NotNull;

/** Fetches the bytes of an entry that is not there yet. */
public interface Fetcher {
    /**
     * Writes all of the entry, or throws. Returning means that the entry is complete: if the source
     * ends early, throw, such as a {@link StoreException} for {@link StoreException.Reason#TOO_SHORT}.
     *
     * @param key the key of the entry
     * @param out takes its bytes; closing it does nothing
     * @throws IOException if they cannot be fetched
     */
    void fetch(@NotNull String key, @NotNull OutputStream out) throws IOException;
}
