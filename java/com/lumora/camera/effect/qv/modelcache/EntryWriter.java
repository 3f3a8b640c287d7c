package com.lumora.camera.effect.qv.modelcache;

import java.io.IOException;
import java.io.InterruptedIOException;
import java.io.OutputStream;
import org.jetbrains.annotations.NotNull;

/**
 * Writes an entry to a temporary file, which {@link #commit} turns into the entry. Any thread. If the
 * content is known in advance, it resumes what an earlier writer wrote: begin at {@link #offset}, or
 * {@link #restart}.
 *
 * <p>On an interrupted thread, writing and committing throw {@link InterruptedIOException} and change
 * nothing; the thread stays interrupted.
 */
public class EntryWriter extends OutputStream {
    private static final int BUFFER = 1 << 12;

    private final long mHandle;
    private final boolean mIsKept;
    private byte[] mBuffer; // of single bytes
    private int mBuffered;
    private boolean mClosed;

    /** @param isKept whether closing keeps uncommitted bytes */
    EntryWriter(long handle, boolean isKept) {
        mHandle = handle;
        mIsKept = isKept;
    }

    /** Throws on an interrupted thread. */
    static void requireUninterrupted() throws InterruptedIOException {
        if (Thread.currentThread().isInterrupted()) {
            throw new InterruptedIOException("the thread was interrupted");
        }
    }

    /**
     * {@return the position of the next byte} If that is the full size of known content, nothing is
     * left to fetch: commit.
     */
    public synchronized long offset() {
        return StoreNatives.offset(mHandle) + mBuffered;
    }

    /**
     * Discards what has been written.
     *
     * @throws IOException if the disk fails, and the writer is closed
     */
    public synchronized void restart() throws IOException {
        requireOpen();
        mBuffered = 0;
        StoreNatives.restart(mHandle);
    }

    @Override
    public final synchronized void write(int b) throws IOException {
        requireOpen();
        if (mBuffer == null) {
            mBuffer = new byte[BUFFER];
        }
        if (mBuffered == 0) {
            requireUninterrupted();
            StoreNatives.offset(mHandle); // throws if the store is closed
        }
        mBuffer[mBuffered++] = (byte) b;
        if (mBuffered == BUFFER) {
            flush();
        }
    }

    /**
     * Appends bytes. A writer that fails is closed.
     *
     * @throws StoreException for {@link StoreException.Reason#WRONG_CONTENT} if known content would
     *     become too long, which drops all of it; for {@link StoreException.Reason#NO_ROOM} if an entry
     *     would exceed the whole budget
     */
    @Override
    public synchronized void write(
            @NotNull byte[] bytes, int offset, int length) throws IOException {
        if ((offset | length) < 0 || length > bytes.length - offset) {
            throw new IndexOutOfBoundsException(
                    offset + " and " + length + " of " + bytes.length + " bytes");
        }
        requireOpen();
        flush();
        requireUninterrupted();
        append(bytes, offset, length);
    }

    @Override
    public synchronized void flush() throws IOException {
        if (mBuffered > 0) {
            requireUninterrupted();
            int length = mBuffered;
            mBuffered = 0;
            append(mBuffer, 0, length);
        }
    }

    private void append(byte[] bytes, int offset, int length) throws IOException {
        try {
            StoreNatives.append(mHandle, bytes, offset, length);
        } catch (StoreException failure) {
            closeHandle(); // the native writer has closed itself
            throw failure;
        }
    }

    /**
     * Makes what was written the entry, replaces an earlier one and its extra bytes, and closes the
     * writer. Once this returns, the entry outlasts a power cut. If it throws, the earlier entry stays
     * or, when only the last sync failed, the new one is there.
     *
     * @throws InterruptedIOException if the thread is interrupted; the writer stays open
     * @throws StoreException for {@link StoreException.Reason#TOO_SHORT} if bytes of known content are
     *     missing: what was written is kept for the next writer to resume; for {@link
     *     StoreException.Reason#WRONG_CONTENT} if the digest is wrong: the bytes are dropped; for
     *     {@link StoreException.Reason#NO_ROOM} if they do not fit the budget
     * @throws IOException if the disk fails
     */
    public synchronized void commit() throws IOException {
        requireOpen();
        requireUninterrupted();
        try {
            flush();
            StoreNatives.commit(mHandle);
        } finally {
            closeHandle();
        }
    }

    /** Ends the writing. Calling it again does nothing. */
    @Override
    public synchronized void close() throws IOException {
        if (mClosed) {
            return;
        }
        try {
            if (mIsKept && mBuffered > 0) {
                StoreNatives.append(mHandle, mBuffer, 0, mBuffered);
            }
        } catch (IllegalStateException ended) {
            // The update or the store has closed it.
        } finally {
            closeHandle();
        }
    }

    /** This writer as a fetcher gets it, who must not commit it. */
    EntryWriter forFetcher() {
        return new EntryWriter(mHandle, true) {
            @Override
            public synchronized void commit() throws IOException {
                flush();
            }

            @Override
            public synchronized void close() throws IOException {
                flush();
            }
        };
    }

    private void closeHandle() {
        StoreNatives.close(mHandle); // throws if a listener calls it
        mClosed = true;
    }

    private void requireOpen() throws IOException {
        if (mClosed) {
            throw new StoreException(StoreException.Reason.IO, "the writer is closed");
        }
    }
}
