package com.lumora.camera.effect.qv.modelcache;

import java.io.IOException;

/**
 * Writes a model file, which {@link #commit} completes. It resumes what an earlier attempt wrote: begin
 * at {@link #offset}, or {@link #restart}. Closing the writer keeps what was written, until an update to
 * another version begins.
 */
public final class ModelWriter extends EntryWriter {
    ModelWriter(long handle) {
        super(handle, true);
    }

    /**
     * Makes what was written a file of the version, if size and digest are right, and closes the
     * writer. Once this returns, the bytes outlast a power cut: the next update finds them, as a file or
     * as a part. If it throws, the message has the expected and the actual value.
     */
    @Override
    public synchronized void commit() throws IOException {
        super.commit();
    }
}
