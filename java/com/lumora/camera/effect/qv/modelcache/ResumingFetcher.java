package com.lumora.camera.effect.qv.modelcache;

import java.io.IOException;
import org.jetbrains.annotations.NotNull;

/** Fetches the bytes of an entry whose content is known, from where an earlier attempt stopped. */
public interface ResumingFetcher {
    /**
     * Writes the rest of the entry, or throws: what was written is kept.
     *
     * @param key the key of the entry
     * @param out takes the bytes from {@link EntryWriter#offset} on, or all of them after
     *     {@link EntryWriter#restart}; committing and closing it do nothing
     * @throws IOException if they cannot be fetched
     */
    void fetch(@NotNull String key, @NotNull EntryWriter out) throws IOException;
}
