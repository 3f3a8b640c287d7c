package com.lumora.camera.effect.qv.modelcache;

import java.io.File;
import java.io.IOException;
import java.security.MessageDigest;
import org.jetbrains.annotations.NotNull;

/**
 * Writes a model file; only {@link #commit} makes it one, so do not close the writer before. Bytes
 * that an earlier attempt wrote are there: begin at {@link #offset}, or {@link #restart}. What is
 * written is kept when the writer is closed, until another version is updated to.
 */
public final class ModelWriter extends EntryWriter {
    private final Update mUpdate;
    private final ModelFile mFile;
    private final MessageDigest mDigest = Digests.create();
    private long mOffset;

    ModelWriter(FileStore store, Update update, ModelFile file, String name) throws IOException {
        super(store, name, keptOf(store.entries().part(name), file));
        mUpdate = update;
        mFile = file;
    }

    /** {@return where the next byte that is written comes to lie in the file} */
    public synchronized long offset() {
        return mOffset;
    }

    /**
     * Drops what has been written.
     *
     * @throws IOException if the disk fails
     */
    public synchronized void restart() throws IOException {
        requireOpen();
        openPart(0);
        mDigest.reset();
        mOffset = 0;
    }

    @Override
    public synchronized void write(
            @NotNull byte[] bytes, int offset, int length) throws IOException {
        requireWithin(bytes, offset, length);
        requireOpen();
        // What is too much is counted for the commit to refuse, and takes no room.
        append(bytes, offset, (int) Math.min(length, mFile.sizeBytes() - size()));
        mDigest.update(bytes, offset, length);
        mOffset += length;
    }

    /**
     * Makes what was written a file of the version, if its size and its digest are right; otherwise
     * drops it and throws an IOException that has both values. Closes the writer.
     */
    @Override
    public synchronized void commit() throws IOException {
        super.commit();
    }

    /** Reads what an earlier attempt wrote. */
    synchronized void resume() throws IOException {
        requireOpen();
        Digests.update(mDigest, mPart);
        mOffset = size();
    }

    private static long keptOf(File part, ModelFile file) {
        return part.isFile() && part.length() <= file.sizeBytes() ? part.length() : 0;
    }

    ModelFile file() {
        return mFile;
    }

    @Override
    void check() throws IOException {
        String wrong = null;
        if (mOffset != mFile.sizeBytes()) {
            wrong = "has " + mOffset + " bytes instead of " + mFile.sizeBytes();
        } else {
            String digest = Digests.toHex(mDigest);
            if (!digest.equals(mFile.sha256())) {
                wrong = "has the digest " + digest + " instead of " + mFile.sha256();
            }
        }
        if (wrong != null) {
            restart();
            throw new IOException(mFile.type() + " " + wrong + ": dropped");
        }
    }

    @Override
    void place() throws IOException {
        mUpdate.place(this);
    }

    /** Leaves what there is to a later attempt. */
    @Override
    void abandon() throws IOException {
        if (mPart.length() == 0) {
            super.abandon();
        }
    }
}
