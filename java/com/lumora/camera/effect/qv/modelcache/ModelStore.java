package com.lumora.camera.effect.qv.modelcache;

import java.io.Closeable;
import java.io.File;
import java.io.IOException;
import java.util.LinkedHashMap;
import java.util.List;
import java.util.Map;
import org.jetbrains.annotations.NotNull;
import org.jetbrains.annotations.Nullable;

/**
 * The versions of one capability's models, under one root directory, within a byte budget. Any thread
 * may call any method at any time. The active version survives kills, power cuts, full disks and damage
 * to the store's own files, as long as its model files are intact. A root has at most one store, across
 * all processes; a store that is dropped without {@link #close} keeps its root until the process ends.
 *
 * <p>Failures are IOExceptions, most of them a {@link StoreException} with a reason. A closed store
 * throws IllegalStateException, and so does one that a {@link SoftErrors.Listener} calls in the middle
 * of one of the store's own calls; {@link #paths}, {@link #activeVersion} and {@link #versions} are
 * allowed even there.
 */
public final class ModelStore implements Closeable {
    private final String mRoot;
    private final Capability mCapability;
    private final long mHandle;

    /** Answers without a native call; null once closed. */
    private volatile Snapshot mSnapshot;

    /**
     * Opens the store of a directory, which is created if it is missing. Damage to the store's own files
     * is repaired, and reported to the {@link SoftErrors.Listener}.
     *
     * @param root the directory
     * @param capability what the models are for
     * @param maxSizeBytes the budget of all model files together
     * @return the store, to be closed
     * @throws IOException if another store has the root; the message says which
     * @throws IllegalArgumentException if the budget is negative, or if the root holds anything but
     *     models of this capability
     * @throws UnsatisfiedLinkError if there is no native library for this device
     */
    public static @NotNull ModelStore open(
            @NotNull File root, @NotNull Capability capability, long maxSizeBytes)
            throws IOException {
        if (capability == null) {
            throw new IllegalArgumentException("no capability");
        }
        StoreNatives.load();
        return new ModelStore(root.getAbsolutePath(), capability, maxSizeBytes);
    }

    private ModelStore(String root, Capability capability, long maxSizeBytes) throws IOException {
        mRoot = root;
        mCapability = capability;
        mHandle = StoreNatives.openModels(this, root, capability.name(),
                capability.types().toArray(new String[0]), maxSizeBytes);
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
     * As {@link #begin(int, List, Room)} with {@link Room#KEEP_ACTIVE}.
     *
     * @param version the number of the version
     * @param files one for each of the capability's types
     * @return the update, to be closed
     * @throws IOException if there is no room, or if the disk fails
     * @throws IllegalArgumentException if a type is missing, repeated or unknown
     * @throws IllegalStateException if another update is running
     */
    public @NotNull Update begin(int version, @NotNull List<ModelFile> files) throws IOException {
        return begin(version, files, Room.KEEP_ACTIVE);
    }

    /**
     * Begins an update to a version. Files that are in the root already, including those of the raw
     * classes, are used and not missing. For the others it makes room: it deletes the versions that have
     * been inactive for longest, then files of no version. It also deletes what earlier updates to other
     * versions left unfinished.
     *
     * @param version the number of the version
     * @param files one for each of the capability's types
     * @param room whether the active version may be deleted as well
     * @return the update, to be closed
     * @throws IOException if this version and the active one do not fit the budget together, if the
     *     file system has no room for the missing files, or if the disk fails
     * @throws IllegalArgumentException if a type is missing, repeated or unknown
     * @throws IllegalStateException if another update is running
     */
    public @NotNull Update begin(int version, @NotNull List<ModelFile> files, @NotNull Room room)
            throws IOException {
        if (files == null || room == null) {
            throw new IllegalArgumentException("no files, or no room");
        }
        String[] types = new String[files.size()];
        long[] sizes = new long[types.length];
        String[] digests = new String[types.length];
        for (int i = 0; i < types.length; ++i) {
            ModelFile file = files.get(i);
            if (file == null) {
                throw new IllegalArgumentException("one of the files is null: " + files);
            }
            types[i] = file.type();
            sizes[i] = file.sizeBytes();
            digests[i] = file.sha256();
        }
        return new Update(StoreNatives.begin(
                mHandle, version, types, sizes, digests, room == Room.GIVE_UP_ACTIVE));
    }

    /**
     * Makes a complete version the active one.
     *
     * @param version the number of the version
     * @throws IllegalArgumentException if there is no such version
     * @throws IOException if it has lost or damaged files, or if the disk fails
     */
    public void activate(int version) throws IOException {
        StoreNatives.activate(mHandle, version);
    }

    /**
     * Makes no version active, and deletes none.
     *
     * @throws IOException if the disk fails
     */
    public void deactivate() throws IOException {
        StoreNatives.deactivate(mHandle);
    }

    /**
     * Deletes all versions except these and the active one, the remains of unfinished updates, and
     * committed files of no version. If that would leave no version at all, every version stays.
     *
     * @param versions the numbers of those to keep
     * @throws IOException if the disk fails
     */
    public void trimExcept(@NotNull int... versions) throws IOException {
        StoreNatives.trimExcept(mHandle, versions);
    }

    /**
     * Reads all files of the complete versions and returns the damaged ones. The next update to such a
     * version lists them as missing.
     *
     * @return the files whose bytes are not those committed, each once
     * @throws IOException if the disk fails
     */
    public @NotNull List<ModelFile> verify() throws IOException {
        return ModelFile.listOf(StoreNatives.verify(mHandle));
    }

    /**
     * {@return the files of a complete version in the order of the types, with their paths}
     *
     * @param version the number of the version
     * @throws IllegalArgumentException if there is no such version
     */
    public @NotNull Map<ModelFile, String> files(int version) {
        Object[] parts = StoreNatives.files(mHandle, version);
        Map<ModelFile, String> files = new LinkedHashMap<>();
        int i = 0;
        for (ModelFile file : ModelFile.listOf(parts)) {
            files.put(file, ((String[]) parts[3])[i++]);
        }
        return files;
    }

    /**
     * {@return the bytes on disk that count towards the budget}
     *
     * @throws IOException if the disk fails
     */
    public long sizeBytes() throws IOException {
        return StoreNatives.sizeBytes(mHandle);
    }

    /**
     * Changes the budget; the next update enforces it.
     *
     * @param bytes the budget of all model files together
     * @throws IllegalArgumentException if it is negative
     */
    public void setMaxSizeBytes(long bytes) {
        StoreNatives.setMaxSizeBytes(mHandle, bytes);
    }

    /** Ends the update and its writers, and releases the root. Calling it again does nothing. */
    @Override
    public void close() {
        StoreNatives.close(mHandle);
        mSnapshot = null;
    }

    /** Native code calls this with each new snapshot, in order. */
    private void publish(String[] types, String[] paths, int[] active, int[] versions) {
        mSnapshot = new Snapshot(mCapability, types, paths, active, versions);
    }

    private Snapshot snapshot() {
        Snapshot snapshot = mSnapshot;
        if (snapshot == null) {
            throw new IllegalStateException("the store is closed: " + mRoot);
        }
        return snapshot;
    }
}
