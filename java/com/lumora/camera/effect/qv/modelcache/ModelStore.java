package com.lumora.camera.effect.qv.modelcache;

import java.io.Closeable;
import java.io.File;
import java.io.IOException;
import java.util.List;
import java.util.Map;
import org.jetbrains.annotations.NotNull;
import org.jetbrains.annotations.Nullable;

/**
 * The versions of one capability's models, under one root directory, within a byte budget. Safe by
 * itself: any thread may call any method at any time; after a kill, a power cut, a full disk or
 * damage to the store's own files the active version is there, as long as its model files are whole;
 * and a root has one store, in this process and in all others.
 *
 * <p>Failures are IOExceptions. A closed store throws IllegalStateException, and so does one that is
 * called from a {@link SoftErrors.Listener} in the middle of a call of its own; {@link #paths},
 * {@link #activeVersion} and {@link #versions} may be called even there.
 */
public final class ModelStore implements Closeable {
    private final File mRoot;
    private final Capability mCapability;
    private final long mMaxSizeBytes;
    private final Disk mDisk;
    private final RootLock mRootLock;

    /** What is told without asking the disk; null once closed. */
    private volatile Snapshot mSnapshot;

    /** All the rest. An app that only asks for its paths never needs it, nor anything native. */
    private volatile ModelStoreImpl mImpl;

    private final Object mOpening = new Object(); // Not this: apps may lock a store.
    private final Object mClosing = new Object();
    private boolean mClosed;

    /**
     * Opens the store of a directory, which is created if it is missing. What is damaged is mended,
     * which the {@link SoftErrors.Listener} is told.
     *
     * @param root the directory
     * @param capability what the models are for
     * @param maxSizeBytes the budget of all model files together
     * @return the store, to be closed
     * @throws IOException if another store has the root; the message says which
     * @throws IllegalArgumentException if the root has the models of another capability, or if the
     *     budget is negative
     */
    public static @NotNull ModelStore open(
            @NotNull File root, @NotNull Capability capability, long maxSizeBytes)
            throws IOException {
        return open(root, capability, maxSizeBytes, null);
    }

    /** On a disk that stands in for the real one, unless it is null. */
    static ModelStore open(File root, Capability capability, long maxSizeBytes, Disk disk)
            throws IOException {
        if (capability == null || maxSizeBytes < 0) {
            throw new IllegalArgumentException(
                    "no capability, or a negative budget: " + capability + ", " + maxSizeBytes);
        }
        File absolute = root.getAbsoluteFile();
        if (!absolute.isDirectory()) {
            new Disk().createFolder(absolute);
        }
        ModelStore store = new ModelStore(absolute, capability, maxSizeBytes, disk);
        boolean opened = false;
        try {
            store.mSnapshot = Snapshot.asLeft(absolute, capability);
            if (store.mSnapshot == null) {
                store.impl();
            }
            opened = true;
            return store;
        } finally {
            if (!opened) {
                store.close();
            }
        }
    }

    private ModelStore(File root, Capability capability, long maxSizeBytes, Disk disk)
            throws IOException {
        mRoot = root;
        mCapability = capability;
        mMaxSizeBytes = maxSizeBytes;
        mDisk = disk;
        mRootLock = new RootLock(root);
    }

    /**
     * {@return the paths of the files of the active version, by their types; empty if there is none}
     */
    public @NotNull Map<String, String> paths() {
        return snapshot().paths;
    }

    /** {@return the number of the active version, or null if there is none} */
    public @Nullable Integer activeVersion() {
        return snapshot().active;
    }

    /** {@return the numbers of the complete versions, in ascending order} */
    public @NotNull List<Integer> versions() {
        return snapshot().versions;
    }

    /**
     * Begins to get a version, for which it makes room: the versions that have not been active for
     * longest go, then files of no version, but never the active version. What earlier updates to
     * other versions left unfinished goes too.
     *
     * @param version the number of the version
     * @param files one for each of the capability's types
     * @return the update, to be closed
     * @throws IOException if the active version and this one do not fit the budget together, or if the
     *     disk fails
     * @throws IllegalArgumentException if a type is missing, repeated or unknown
     * @throws IllegalStateException if another update is running
     */
    public @NotNull Update begin(int version, @NotNull List<ModelFile> files) throws IOException {
        return impl().begin(version, files);
    }

    /**
     * Makes a complete version the active one.
     *
     * @param version the number of the version
     * @throws IllegalArgumentException if there is no such version
     * @throws IOException if it has lost or damaged files, or if the disk fails
     */
    public void activate(int version) throws IOException {
        impl().activate(version);
    }

    /**
     * Deletes all versions but these and the active one, and what unfinished updates have left. If
     * that would leave no version at all, all of them stay.
     *
     * @param versions the numbers of those to keep
     * @throws IOException if the disk fails
     */
    public void trimExcept(@NotNull int... versions) throws IOException {
        impl().trimExcept(versions);
    }

    /**
     * Reads all files of the complete versions and returns those whose bytes are not what was
     * committed any more. The next update to such a version lists them as missing.
     *
     * @return those files, each once
     * @throws IOException if the disk fails
     */
    public @NotNull List<ModelFile> verify() throws IOException {
        return impl().verify();
    }

    /** Ends the update and lets go of the root. Calling it again does nothing. */
    @Override
    public void close() {
        requireOutside();
        synchronized (mClosing) { // Who calls it at the same time returns when it is done.
            ModelStoreImpl impl;
            synchronized (mOpening) {
                mClosed = true;
                impl = mImpl;
            }
            try {
                if (impl != null) {
                    impl.files().close();
                }
            } finally {
                mRootLock.close();
                mSnapshot = null; // last, since what ran until now has set it
            }
        }
    }

    /** From now on, this is what is told. */
    void publish(Snapshot snapshot) {
        mSnapshot = snapshot;
    }

    private Snapshot snapshot() {
        Snapshot snapshot = mSnapshot;
        if (snapshot == null) {
            throw new IllegalStateException("the store is closed: " + mRoot);
        }
        return snapshot;
    }

    private ModelStoreImpl impl() throws IOException {
        requireOutside();
        synchronized (mOpening) {
            if (mClosed) {
                throw new IllegalStateException("the store is closed: " + mRoot);
            }
            if (mImpl == null) {
                Disk disk = mDisk == null ? new Disk() : mDisk;
                FileStore files = new FileStore(mRoot, mMaxSizeBytes, disk, mRootLock);
                mImpl = new ModelStoreImpl(this, files, mCapability);
            }
            return mImpl;
        }
    }

    /** Throws if a listener calls in the middle of a call. */
    private void requireOutside() {
        if (Thread.holdsLock(mOpening)) {
            throw new IllegalStateException("called in the middle of another call of the store");
        }
        ModelStoreImpl impl = mImpl;
        if (impl != null) {
            impl.files().requireOutside();
        }
    }
}
