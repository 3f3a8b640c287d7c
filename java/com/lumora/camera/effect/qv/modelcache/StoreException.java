package com.lumora.camera.effect.qv.modelcache;

import java.io.IOException;
import org.jetbrains.annotations.NotNull;
import org.jetbrains.annotations.Nullable;

/**
 * A store could not do what it was asked. What was committed before stays as it was.
 *
 * @serial exclude
 */
public final class StoreException extends IOException {
    private static final long serialVersionUID = 1L;

    /** What failed, and so what to do: retry, free room, fetch again or report. */
    public enum Reason {
        /** The budget is too small; see the numbers of bytes. */
        NO_ROOM,
        /** The file system or a quota is full; see the numbers of bytes. */
        DISK_FULL,
        /** Bytes are missing at the end. Those that came are kept. */
        TOO_SHORT,
        /** Too many bytes, or wrong ones. They were dropped. */
        WRONG_CONTENT,
        /** Another store has the root. */
        IN_USE,
        /** The root cannot be written to. */
        READ_ONLY,
        /** Committed files are lost or damaged. */
        DAMAGED,
        /** The system refused anything else. */
        IO
    }

    private static final Reason[] REASONS = Reason.values();

    private final Reason mReason;
    private final String mPath;
    private final int mErrno;
    private final long mNeededBytes;
    private final long mBudgetBytes;
    private final long mFreeBytes;

    /**
     * For a fetcher, to say what went wrong: {@link Reason#TOO_SHORT}, for instance, when a connection
     * ended early.
     *
     * @param reason what kind of failure
     * @param message what happened
     */
    public StoreException(@NotNull Reason reason, @NotNull String message) {
        this(reason.ordinal(), message, "", 0, -1, -1, -1);
    }

    /**
     * The same, with what caused it.
     *
     * @param reason what kind of failure
     * @param message what happened
     * @param cause what caused it
     */
    public StoreException(
            @NotNull Reason reason, @NotNull String message, @Nullable Throwable cause) {
        this(reason, message);
        initCause(cause);
    }

    /** Called by native code, which passes reasons by number. */
    private StoreException(int reason, String message, String path, int errno, long neededBytes,
            long budgetBytes, long freeBytes) {
        super(message);
        mReason = REASONS[reason];
        mPath = path.isEmpty() ? null : path;
        mErrno = errno;
        mNeededBytes = neededBytes;
        mBudgetBytes = budgetBytes;
        mFreeBytes = freeBytes;
    }

    /** {@return what kind of failure it is} */
    public @NotNull Reason reason() {
        return mReason;
    }

    /** {@return the file or directory that failed, or null} */
    public @Nullable String path() {
        return mPath;
    }

    /** {@return the system's errno, or 0 if no system call failed} */
    public int errno() {
        return mErrno;
    }

    /** {@return what would be enough, of the budget or of free bytes; -1 unless there was no room} */
    public long neededBytes() {
        return mNeededBytes;
    }

    /** {@return the budget of the store; -1 unless there was no room} */
    public long budgetBytes() {
        return mBudgetBytes;
    }

    /** {@return the bytes that were free on the file system; -1 if unknown} */
    public long freeBytes() {
        return mFreeBytes;
    }
}
