package com.lumora.camera.effect.qv.modelcache;

import java.io.Closeable;
import java.io.IOException;
import java.util.ArrayList;
import java.util.HashSet;
import java.util.LinkedHashMap;
import java.util.List;
import java.util.Map;
import java.util.Set;
import org.jetbrains.annotations.NotNull;

/**
 * The getting of one version. Its methods and its writers may be used from any threads. What it got
 * stays when it is closed, for the next update to the version.
 */
public final class Update implements Closeable {
    private final ModelStoreImpl mStore;
    private final Version mVersion;

    /** The names of the entries that are there. */
    private final Set<String> mThere = new HashSet<>();
    private boolean mEnding;

    Update(ModelStoreImpl store, Version version) {
        mStore = store;
        mVersion = version;
    }

    /** {@return the files that are still to be written, each once} */
    public @NotNull List<ModelFile> missing() {
        mStore.enter();
        try {
            mStore.requireRunning(this);
            return new ArrayList<>(missingByName().values());
        } finally {
            mStore.leave();
        }
    }

    /**
     * Begins to write a missing file, or goes on with it.
     *
     * @param file one of those that are missing
     * @return its writer, to be closed
     * @throws IllegalArgumentException if the file is not missing
     * @throws IllegalStateException if it is being written already
     * @throws IOException if the disk fails
     */
    public @NotNull ModelWriter write(@NotNull ModelFile file) throws IOException {
        ModelWriter writer;
        mStore.enter();
        try {
            mStore.requireRunning(this);
            String name = mVersion.names().get(file);
            if (name == null || mThere.contains(name)) {
                throw new IllegalArgumentException("not missing: " + file);
            }
            mStore.files().writers().requireUnwritten(name);
            writer = new ModelWriter(mStore.files(), this, file, name);
            mStore.files().writers().add(writer);
        } finally {
            mStore.leave();
        }
        boolean resumed = false;
        try {
            writer.resume();
            resumed = true;
        } finally {
            if (!resumed) {
                writer.close();
            }
        }
        return writer;
    }

    /**
     * Makes the version the active one, and ends the update.
     *
     * @throws IllegalStateException if files are missing
     * @throws IOException if the disk fails, or if a file was lost in the meantime: the version that
     *     was active still is, and the update goes on
     */
    public void activate() throws IOException {
        mStore.enter();
        try {
            mStore.requireRunning(this);
            if (!isComplete()) {
                throw new IllegalStateException("still missing: " + missingByName().values());
            }
            mStore.activate(mVersion);
        } finally {
            mStore.leave();
        }
        close();
    }

    /** Ends the update, and all writing. */
    @Override
    public void close() {
        mStore.end(this);
    }

    // The rest is for the store, which has entered.

    Version version() {
        return mVersion;
    }

    boolean isEnding() {
        return mEnding;
    }

    void setEnding() {
        mEnding = true;
    }

    boolean isComplete() {
        return mThere.containsAll(mVersion.names().values());
    }

    Map<String, ModelFile> missingByName() {
        Map<String, ModelFile> missing = new LinkedHashMap<>();
        for (Map.Entry<ModelFile, String> file : mVersion.names().entrySet()) {
            if (!mThere.contains(file.getValue()) && !missing.containsKey(file.getValue())) {
                missing.put(file.getValue(), file.getKey());
            }
        }
        return missing;
    }

    /** Makes the part of a file that is being written one of its files. */
    void place(ModelWriter writer) throws IOException {
        mStore.place(this, writer);
    }

    /** Commits what an earlier attempt has written to the end. Not under the lock. */
    void commitFinished() {
        for (ModelFile file : missing()) {
            try {
                commitFinished(file);
            } catch (IOException wrong) {
                SoftErrors.report("begin", wrong.getMessage());
            }
        }
    }

    private void commitFinished(ModelFile file) throws IOException {
        if (file.sizeBytes() > 0 && mStore.lengthOfPart(mVersion.names().get(file)) == file.sizeBytes()) {
            try (ModelWriter writer = write(file)) {
                writer.commit();
            }
        }
    }

    void setThere(String name, boolean there) {
        if (there) {
            mThere.add(name);
        } else {
            mThere.remove(name);
        }
    }
}
