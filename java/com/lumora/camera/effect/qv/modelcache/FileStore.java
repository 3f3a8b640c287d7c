package com.lumora.camera.effect.qv.modelcache;

import java.io.Closeable;
import java.io.File;
import java.io.IOException;
import java.util.Collections;
import java.util.concurrent.locks.ReentrantLock;
import org.jetbrains.annotations.NotNull;
import org.jetbrains.annotations.Nullable;

/**
 * Files under one root directory, each under a key, within a byte budget: what was not used for
 * longest goes first. Safe by itself: any thread may call any method at any time; a kill, a power
 * cut or a full disk costs no committed entry; and a root has one store, in this process and in all
 * others.
 *
 * <p>Failures are IOExceptions. A closed store throws IllegalStateException, and so does one that is
 * called from a {@link SoftErrors.Listener} in the middle of a call of its own.
 */
public final class FileStore implements Closeable {
    private final File mRoot;
    private final long mMaxSizeBytes;
    private final Disk mDisk;
    private final Entries mEntries;
    private final RootLock mRootLock;

    /** Held by whatever changes the root, but never while the bytes of an entry are on their way. */
    private final ReentrantLock mLock = new ReentrantLock();

    private final Writers mWriters = new Writers(this);
    private final Flights mFlights = new Flights(this);
    private final Object mClosing = new Object();
    private volatile boolean mClosed;
    private NativeCache mNatives; // made when it is first needed

    /**
     * Opens the store of a directory, which is created if it is missing.
     *
     * @param root the directory
     * @param maxSizeBytes the budget of all entries together
     * @return the store, to be closed
     * @throws IOException if another store has the root; the message says which
     * @throws IllegalArgumentException if the budget is negative, or if the root has the versions of a
     *     {@link ModelStore}, whose files would be entries like others
     */
    public static @NotNull FileStore open(
            @NotNull File root, long maxSizeBytes) throws IOException {
        if (maxSizeBytes < 0) {
            throw new IllegalArgumentException("negative budget: " + maxSizeBytes);
        }
        File absolute = root.getAbsoluteFile();
        Disk disk = new Disk();
        disk.createFolder(absolute);
        FileStore store = new FileStore(absolute, maxSizeBytes, disk, new RootLock(absolute));
        boolean opened = false;
        try {
            if (new File(absolute, Snapshot.NAME).exists()) {
                throw new IllegalArgumentException(root + " has the versions of a model store");
            }
            store.mEntries.dropUnfinished(Collections.<String>emptySet());
            store.natives().reload();
            opened = true;
        } catch (IOException failure) { // of a read-only disk, say, of which entries can be got
            SoftErrors.report("open", failure.toString());
            opened = true;
        } finally {
            if (!opened) {
                store.close();
            }
        }
        return store;
    }

    FileStore(File root, long maxSizeBytes, Disk disk, RootLock rootLock) {
        mRoot = root;
        mMaxSizeBytes = maxSizeBytes;
        mDisk = disk;
        mRootLock = rootLock;
        mEntries = new Entries(root, disk);
    }

    /**
     * Finds the file of an entry, which thereby counts as used. It stays until the entry is replaced,
     * removed, or evicted by a later commit.
     *
     * @param key the key of the entry
     * @return null if there is none, and only then
     * @throws IOException if the disk fails
     */
    public @Nullable File get(@NotNull String key) throws IOException {
        String name = Entries.nameOf(key);
        requireOpen();
        if (!mEntries.has(name)) {
            return null;
        }
        mEntries.touch(name);
        return mEntries.file(name);
    }

    /**
     * Begins to write an entry. What is there stays until the writer commits.
     *
     * @param key the key of the entry
     * @return its writer, to be closed
     * @throws IllegalStateException if the entry is being written already
     * @throws IOException if the disk fails
     */
    public @NotNull EntryWriter write(@NotNull String key) throws IOException {
        String name = Entries.nameOf(key);
        enter();
        try {
            requireForWriting();
            mWriters.requireUnwritten(name);
            mEntries.dropOldExtra(name);
            EntryWriter writer = new EntryWriter(this, name, 0);
            mWriters.add(writer);
            return writer;
        } finally {
            leave();
        }
    }

    /**
     * The file of an entry, which {@code fetcher} gets if there is none. Of several threads that
     * ask for one key, one fetches, and the others wait for what becomes of it. What the fetcher
     * throws, the thread that fetches gets as it is.
     *
     * @param key the key of the entry
     * @param fetcher gets its bytes
     * @return its file
     * @throws IOException if the fetcher or the disk fails
     * @throws IllegalStateException if the entry is being written, if fetchers wait for each other or,
     *     on a thread that waited, if the fetcher threw anything but an IOException
     */
    public @NotNull File getOrFetch(
            @NotNull String key, @NotNull Fetcher fetcher) throws IOException {
        File file = get(key);
        if (file != null) {
            return file;
        }
        return mFlights.fetch(key, fetcher);
    }

    /**
     * Deletes an entry and its extra bytes.
     *
     * @param key the key of the entry
     * @return false if there was none
     * @throws IOException if the disk fails
     */
    public boolean remove(@NotNull String key) throws IOException {
        String name = Entries.nameOf(key);
        enter();
        try {
            requireForWriting();
            if (!mEntries.has(name)) {
                return false;
            }
            mEntries.drop(Collections.singleton(name));
            natives().reload();
            return true;
        } finally {
            leave();
        }
    }

    /**
     * {@return the bytes of all entries together}
     *
     * @throws IOException if the disk fails
     */
    public long size() throws IOException {
        requireOpen();
        return mEntries.size();
    }

    /**
     * {@return the extra bytes of an entry, or null if it has none}
     *
     * @param key the key of the entry
     * @throws IOException if the disk fails
     */
    public @Nullable byte[] extra(@NotNull String key) throws IOException {
        String name = Entries.nameOf(key);
        enter();
        try {
            return mEntries.has(name) ? mEntries.extra(name) : null;
        } finally {
            leave();
        }
    }

    /**
     * Gives an entry extra bytes, in place of those that it has.
     *
     * @param key the key of the entry
     * @param extra any bytes
     * @return false if there is no such entry
     * @throws IOException if the disk fails
     */
    public boolean setExtra(@NotNull String key, @NotNull byte[] extra) throws IOException {
        String name = Entries.nameOf(key);
        enter();
        try {
            requireForWriting();
            if (!mEntries.has(name)) {
                return false;
            }
            mEntries.replaceExtra(name, extra);
            return true;
        } finally {
            leave();
        }
    }

    /** Ends all writing and lets go of the root. Calling it again does nothing. */
    @Override
    public void close() {
        requireOutside();
        synchronized (mClosing) { // Who calls it at the same time returns when it is done.
            lock();
            boolean wasClosed = mClosed;
            mClosed = true;
            leave();
            if (!wasClosed) {
                closeAll();
            }
        }
    }

    private void closeAll() {
        try {
            mWriters.closeAll();
        } finally {
            if (mNatives != null) {
                mNatives.close();
            }
            mRootLock.close();
        }
    }

    // The rest is for the writers and the model store.

    /** Takes the lock, of an open store. */
    void enter() {
        lock();
        if (mClosed) {
            leave();
            requireOpen();
        }
    }

    /** Takes the lock, of a store that may be closed. */
    void lock() {
        requireOutside();
        mLock.lock();
    }

    void requireOutside() {
        if (mLock.isHeldByCurrentThread()) {
            throw new IllegalStateException("called in the middle of another call of the store");
        }
    }

    void leave() {
        mLock.unlock();
    }

    void requireOpen() {
        if (mClosed) {
            throw new IllegalStateException("the store is closed: " + mRoot);
        }
    }

    /** Whether the root has become writable only now, and may look otherwise than it did. */
    boolean lockForWriting() throws IOException {
        return mRootLock.lockForWriting();
    }

    boolean isForWriting() {
        return mRootLock.isForWriting();
    }

    private void requireForWriting() throws IOException {
        if (lockForWriting()) {
            mEntries.dropUnfinished(mWriters.names());
        }
    }

    long maxSizeBytes() {
        return mMaxSizeBytes;
    }

    File root() {
        return mRoot;
    }

    Disk disk() {
        return mDisk;
    }

    Entries entries() {
        return mEntries;
    }

    Writers writers() {
        return mWriters;
    }

    NativeCache natives() {
        if (mNatives == null) {
            mNatives = new NativeCache(mRoot);
        }
        return mNatives;
    }

    /** Whether the native records are as they should be, as far as they were written here. */
    boolean areRecordsCurrent() {
        return mNatives == null || mNatives.isCurrent();
    }

    /** Makes what was written the entry, for which there is room. */
    void place(String name) throws IOException {
        natives().require(name);
        mEntries.place(name);
        natives().adopt(name);
    }
}
