package com.lumora.camera.effect.qv.modelcache;

import java.io.Closeable;
import java.io.File;
import java.io.FilterOutputStream;
import java.io.IOException;
import java.util.Arrays;
import java.util.List;
import java.util.concurrent.Callable;
import org.jetbrains.annotations.NotNull;
import org.jetbrains.annotations.Nullable;

/**
 * Files under one root directory, each under a key, within a byte budget: the least recently used ones
 * are evicted first. Any thread may call any method at any time. Committed entries survive kills, power
 * cuts and full disks. A root has at most one store, across all processes; a store that is dropped
 * without {@link #close} keeps its root until the process ends.
 *
 * <p>A key is any text whose file name has at most 244 characters; methods throw
 * IllegalArgumentException for others. Failures are IOExceptions, most of them a {@link StoreException}
 * with a reason. A closed store throws IllegalStateException, and so does one that a
 * {@link SoftErrors.Listener} calls in the middle of one of the store's own calls.
 */
public final class FileStore implements Closeable {
    private final long mHandle;
    private final SingleFlight mFlights = new SingleFlight();

    /**
     * Opens the store of a directory, which is created if it is missing.
     *
     * @param root the directory
     * @param maxSizeBytes the budget of all entries together
     * @return the store, to be closed
     * @throws IOException if another store has the root; the message says which
     * @throws IllegalArgumentException if the budget is negative, or if the root holds the models of a
     *     {@link ModelStore}
     * @throws UnsatisfiedLinkError if there is no native library for this device
     */
    public static @NotNull FileStore open(
            @NotNull File root, long maxSizeBytes) throws IOException {
        StoreNatives.load();
        return new FileStore(StoreNatives.openFiles(root.getAbsolutePath(), maxSizeBytes));
    }

    private FileStore(long handle) {
        mHandle = handle;
    }

    /**
     * Finds the file of an entry, and counts this as a use. It stays until the entry is replaced,
     * removed, or evicted by a later commit.
     *
     * @param key the key of the entry
     * @return null if there is none, and only then
     * @throws IOException if the disk fails
     */
    public @Nullable File get(@NotNull String key) throws IOException {
        String path = StoreNatives.get(mHandle, key);
        return path == null ? null : new File(path);
    }

    /**
     * Begins to write an entry. An earlier one stays until the writer commits; closing it without a
     * commit drops what was written.
     *
     * @param key the key of the entry
     * @return its writer, to be closed
     * @throws IllegalStateException if the entry is being written already
     * @throws IOException if the disk fails
     */
    public @NotNull EntryWriter write(@NotNull String key) throws IOException {
        return new EntryWriter(StoreNatives.write(mHandle, key), false);
    }

    /**
     * The same for known content, which the commit checks. It resumes what an earlier writer of that
     * content wrote, even before a kill.
     *
     * @param key the key of the entry
     * @param sizeBytes the size of the entry
     * @param sha256 the SHA-256 digest of its bytes, 64 hexadecimal digits
     * @return its writer, to be closed
     * @throws IllegalArgumentException if the size is negative or the digest malformed
     * @throws IllegalStateException if the entry is being written already
     * @throws IOException if it is larger than the budget, or if the disk fails
     */
    public @NotNull EntryWriter write(@NotNull String key, long sizeBytes, @NotNull String sha256)
            throws IOException {
        return new EntryWriter(StoreNatives.writeKnown(mHandle, key, sizeBytes, sha256), true);
    }

    /**
     * The file of an entry, which {@code fetcher} fetches if there is none. Of several threads that ask
     * for one key, one fetches and the others wait for the result. What the fetcher throws arrives
     * unchanged on the thread that fetches.
     *
     * @param key the key of the entry
     * @param fetcher fetches its bytes
     * @return its file
     * @throws IOException if the fetcher or the disk fails
     * @throws IllegalStateException if the entry is being written, if fetchers wait for each other or,
     *     on a thread that waited, if the fetcher threw anything but an IOException
     */
    public @NotNull File getOrFetch(final @NotNull String key, final @NotNull Fetcher fetcher)
            throws IOException {
        return mFlights.run('/' + key, new Callable<File>() {
            @Override
            public File call() throws IOException {
                File found = get(key);
                if (found != null) {
                    return found;
                }
                try (final EntryWriter out = write(key)) {
                    fetcher.fetch(key, new FilterOutputStream(out) {
                        @Override
                        public void write(byte[] bytes, int offset, int length)
                                throws IOException {
                            out.write(bytes, offset, length);
                        }

                        @Override
                        public void close() {} // Complete is what the fetcher says by returning.
                    });
                    out.commit();
                }
                return fetched(key);
            }
        });
    }

    private File fetched(String key) throws IOException {
        File file = get(key);
        if (file == null) {
            throw new IOException("removed as soon as it was fetched: " + key);
        }
        return file;
    }

    /**
     * The same for known content. An existing entry of that size is not read again.
     *
     * @param key the key of the entry
     * @param sizeBytes the size of the entry
     * @param sha256 the SHA-256 digest of its bytes, 64 hexadecimal digits
     * @param fetcher fetches its bytes
     * @return its file
     * @throws IOException if the fetcher or the disk fails, or if the content is wrong
     * @throws IllegalArgumentException if the size is negative or the digest malformed
     * @throws IllegalStateException as without known content
     */
    public @NotNull File getOrFetch(final @NotNull String key, final long sizeBytes,
            final @NotNull String sha256, final @NotNull ResumingFetcher fetcher)
            throws IOException {
        String flight = sha256 + '/' + sizeBytes + '/' + key; // only of the same content
        return mFlights.run(flight, new Callable<File>() {
            @Override
            public File call() throws IOException {
                File found = get(key);
                if (found != null && found.length() == sizeBytes) {
                    return found;
                }
                long handle = StoreNatives.writeKnown(mHandle, key, sizeBytes, sha256);
                try (EntryWriter out = new EntryWriter(handle, true)) {
                    EntryWriter lent = out.forFetcher();
                    fetcher.fetch(key, lent);
                    lent.flush();
                    out.commit();
                }
                return fetched(key);
            }
        });
    }

    /**
     * Deletes an entry and its extra bytes.
     *
     * @param key the key of the entry
     * @return false if there was none
     * @throws IOException if the disk fails
     */
    public boolean remove(@NotNull String key) throws IOException {
        return StoreNatives.remove(mHandle, key);
    }

    /**
     * Deletes all entries and the remains of unfinished writers.
     *
     * @throws IOException if the disk fails
     */
    public void clear() throws IOException {
        StoreNatives.clear(mHandle);
    }

    /**
     * {@return the extra bytes of an entry, or null if it has none}
     *
     * @param key the key of the entry
     * @throws IOException if the disk fails
     */
    public @Nullable byte[] extra(@NotNull String key) throws IOException {
        return StoreNatives.extra(mHandle, key);
    }

    /**
     * Attaches extra bytes to an entry, in place of earlier ones. They are deleted with its content.
     *
     * @param key the key of the entry
     * @param extra any bytes, 16 MiB at most
     * @return false if there is no such entry
     * @throws IOException if the disk fails
     */
    public boolean setExtra(@NotNull String key, @NotNull byte[] extra) throws IOException {
        return StoreNatives.setExtra(mHandle, key, extra);
    }

    /**
     * {@return the keys of all entries, in no particular order} Files in the root whose name stands for
     * no key are left out, but count towards {@link #size}.
     *
     * @throws IOException if the disk fails
     */
    public @NotNull List<String> keys() throws IOException {
        return Arrays.asList(StoreNatives.keys(mHandle));
    }

    /**
     * {@return the bytes on disk of all entries together}
     *
     * @throws IOException if the disk fails
     */
    public long size() throws IOException {
        return StoreNatives.sizeBytes(mHandle);
    }

    /**
     * Changes the budget; the next commit enforces it.
     *
     * @param bytes the budget of all entries together
     * @throws IllegalArgumentException if it is negative
     */
    public void setMaxSizeBytes(long bytes) {
        StoreNatives.setMaxSizeBytes(mHandle, bytes);
    }

    /** Ends all writing and releases the root. Calling it again does nothing. */
    @Override
    public void close() {
        StoreNatives.close(mHandle);
    }
}
