package com.lumora.camera.effect.qv.modelcache;

import java.io.IOException;
import java.io.OutputStream;

/** Gets the bytes of an entry that is not there yet. */
public interface Fetcher {
    /** Writes all of the entry, or throws. */
    void fetch(String key, OutputStream out) throws IOException;
}
