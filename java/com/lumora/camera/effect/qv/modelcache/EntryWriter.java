package com.lumora.camera.effect.qv.modelcache;

import java.io.File;
import java.io.FileOutputStream;
import java.io.IOException;
import java.io.OutputStream;
import java.util.Collections;
import org.jetbrains.annotations.NotNull;

/** Writes an entry beside the others; {@link #commit} makes it one. */
public class EntryWriter extends OutputStream {
    final FileStore mStore;
    final String mName;
    final File mPart;
    private FileOutputStream mOut; // null once closed
    private long mSize;

    EntryWriter(FileStore store, String name, long kept) throws IOException {
        mStore = store;
        mName = name;
        mPart = store.entries().part(name);
        openPart(kept);
    }

    @Override
    public final void write(int b) throws IOException {
        write(new byte[] {(byte) b}, 0, 1);
    }

    /** Fails as soon as the whole budget is exceeded. */
    @Override
    public synchronized void write(
            @NotNull byte[] bytes, int offset, int length) throws IOException {
        requireWithin(bytes, offset, length);
        requireOpen();
        if (length > mStore.maxSizeBytes() - mSize) {
            throw new IOException("more than the whole budget of " + mStore.maxSizeBytes()
                    + " bytes: " + mPart);
        }
        append(bytes, offset, length);
    }

    /**
     * Makes what was written the entry, in place of an earlier one and of its extra bytes, and
     * closes the writer. Once this returns, the entry outlasts a power cut. If it throws, what was
     * there before is there or, when only the last sync failed, the new entry.
     *
     * @throws IOException if it is too much for the budget, or the disk fails
     */
    public synchronized void commit() throws IOException {
        mStore.requireOutside();
        requireOpen();
        try {
            check();
            syncPart();
            if (mPart.length() != mSize) {
                throw new IOException(mPart + " was changed by somebody else");
            }
            place();
        } finally {
            close();
        }
    }

    /** What was not committed is dropped. */
    @Override
    public synchronized void close() throws IOException {
        mStore.requireOutside();
        if (mOut != null) {
            try {
                closePart();
                abandon();
            } finally {
                mStore.writers().remove(this);
            }
        }
    }

    /** Throws what is wrong with what was written. */
    void check() throws IOException {}

    /** Makes the part the entry. */
    void place() throws IOException {
        mStore.enter();
        try {
            mStore.entries().makeRoom(mSize - Disk.size(mStore.entries().file(mName)),
                    mStore.maxSizeBytes(), Collections.singleton(mName));
            mStore.place(mName);
        } finally {
            mStore.leave();
        }
    }

    /** Does away with the part, if it has not become an entry. */
    void abandon() throws IOException {
        mStore.disk().delete(mPart);
    }

    /** Bytes in the part. */
    final long size() {
        return mSize;
    }

    /** Of what fails, nobody knows how much was written: nothing more can be, then. */
    final void append(byte[] bytes, int offset, int length) throws IOException {
        boolean written = false;
        try {
            mOut.write(bytes, offset, length);
            written = true;
        } catch (IOException failure) {
            throw Disk.named(mPart, failure);
        } finally {
            if (!written) {
                close();
            }
        }
        mSize += length;
    }

    static void requireWithin(byte[] bytes, int offset, int length) {
        if ((offset | length) < 0 || length > bytes.length - offset) {
            throw new IndexOutOfBoundsException(
                    offset + " and " + length + " of " + bytes.length + " bytes");
        }
    }

    /** Opens the part, which keeps so many bytes: all that it has, or none. */
    final void openPart(long size) throws IOException {
        closePart();
        if (mPart.isDirectory()) {
            mStore.disk().delete(mPart);
        }
        mOut = mStore.disk().open(mPart, size > 0);
        mSize = size;
    }

    final void requireOpen() throws IOException {
        if (mOut == null) {
            mStore.requireOpen();
            throw new IOException("the writer is closed: " + mPart);
        }
    }

    /** What failed to be synced once may never be, although a second attempt succeeds. */
    private void syncPart() throws IOException {
        boolean synced = false;
        try {
            mStore.disk().sync(mOut);
            synced = true;
        } catch (IOException failure) {
            throw Disk.named(mPart, failure);
        } finally {
            if (!synced) {
                mPart.delete();
            }
        }
    }

    private void closePart() throws IOException {
        FileOutputStream out = mOut;
        mOut = null;
        if (out != null) {
            out.close();
        }
    }
}
