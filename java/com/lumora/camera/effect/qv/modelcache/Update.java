package com.lumora.camera.effect.qv.modelcache;

import java.io.Closeable;
import java.io.IOException;
import java.util.List;
import org.jetbrains.annotations.NotNull;

/**
 * An update to one version. Any thread may use it and its writers. What it downloaded stays when it
 * ends, for the next update to the version. Once it has ended, its methods throw IllegalStateException,
 * except for {@link #cancel} and {@link #close}.
 */
public final class Update implements Closeable {
    private final long mHandle;

    Update(long handle) {
        mHandle = handle;
    }

    /** {@return the files that are still to be written, each once} */
    public @NotNull List<ModelFile> missing() {
        return ModelFile.listOf(StoreNatives.missing(mHandle));
    }

    /**
     * Begins to write a missing file, or resumes it.
     *
     * @param file one of those that are missing
     * @return its writer, to be closed
     * @throws IllegalArgumentException if the file is not missing
     * @throws IllegalStateException if it is being written already
     * @throws IOException if the disk fails
     */
    public @NotNull ModelWriter write(@NotNull ModelFile file) throws IOException {
        if (file == null) {
            throw new IllegalArgumentException("no file");
        }
        return new ModelWriter(
                StoreNatives.writeModel(mHandle, file.type(), file.sizeBytes(), file.sha256()));
    }

    /** {@return the bytes of all files of the version; a file of several types counts once} */
    public long totalBytes() {
        return StoreNatives.totalBytes(mHandle);
    }

    /**
     * {@return the bytes of missing files that have not been written yet, by this update or earlier}
     *
     * @throws IOException if the disk fails
     */
    public long remainingBytes() throws IOException {
        return StoreNatives.remainingBytes(mHandle);
    }

    /**
     * Makes the version the active one, and ends the update.
     *
     * @throws IllegalStateException if files are missing
     * @throws java.io.InterruptedIOException if the thread is interrupted, and stays so; nothing has
     *     changed
     * @throws IOException if the disk fails, or if a file has been lost: the active version stays
     *     active, and the update continues
     */
    public void activate() throws IOException {
        EntryWriter.requireUninterrupted();
        StoreNatives.activateUpdate(mHandle);
        close();
    }

    /**
     * From now on, its writers and {@link #activate} throw {@link
     * java.util.concurrent.CancellationException}; what was written stays. Returns at once and wakes no
     * thread: a blocked download notices at its next write.
     */
    public void cancel() {
        StoreNatives.cancel(mHandle);
    }

    /** Ends the update and its writers. Calling it again does nothing. */
    @Override
    public void close() {
        StoreNatives.close(mHandle);
    }
}
