package com.lumora.camera.effect.qv.modelcache;

import java.io.IOException;

/**
 * Writes a model file; only {@link #commit} makes it one, so do not close the writer before. Bytes
 * that an earlier attempt wrote are there: begin at {@link #offset}, or {@link #restart}. What is
 * written is kept when the writer is closed, until another version is updated to.
 */
public final class ModelWriter extends EntryWriter {
    ModelWriter(long handle) {
        super(handle, true);
    }

    /**
     * Makes what was written a file of the version, if its size and its digest are right, and closes
     * the writer. Once this returns, the bytes outlast a power cut: the next update finds them. What it
     * throws has both values.
     */
    @Override
    public synchronized void commit() throws IOException {
        super.commit();
    }
}
