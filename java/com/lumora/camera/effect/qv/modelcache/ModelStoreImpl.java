package com.lumora.camera.effect.qv.modelcache;

import java.io.IOException;
import java.util.ArrayList;
import java.util.Collections;
import java.util.HashSet;
import java.util.LinkedHashMap;
import java.util.List;
import java.util.Map;
import java.util.Set;

/** What a {@link ModelStore} does beyond telling its paths. */
final class ModelStoreImpl {
    private final ModelStore mStore;
    private final Capability mCapability;
    private final FileStore mFiles;
    private final Entries mEntries;

    // To be used under the lock of the file store alone.
    private final Versions mVersions;
    private Update mUpdate;

    ModelStoreImpl(ModelStore store, FileStore files, Capability capability) throws IOException {
        mStore = store;
        mCapability = capability;
        mFiles = files;
        mEntries = files.entries();
        enter();
        try {
            mVersions = new Versions(capability, files);
            publish();
        } finally {
            leave();
        }
    }

    Update begin(int version, List<ModelFile> files) throws IOException {
        Update update;
        enter();
        try {
            if (mUpdate != null) {
                throw new IllegalStateException("an update to version "
                        + mUpdate.version().number() + " is running");
            }
            lockForWriting();
            VersionTable table = mVersions.table();
            Version planned = VersionPlan.of(version, files, mCapability, table);
            VersionPlan.requireBudget(planned, table, mFiles.maxSizeBytes());
            update = new Update(this, planned);
            for (Map.Entry<ModelFile, String> file : planned.names().entrySet()) {
                update.setThere(file.getValue(), isThere(file.getKey(), file.getValue()));
            }
            Map<String, ModelFile> missing = update.missingByName();
            mEntries.dropUnfinished(missing.keySet());
            long bytes = 0;
            for (Map.Entry<String, ModelFile> file : missing.entrySet()) {
                bytes += Math.max(0, file.getValue().sizeBytes()
                        - Disk.size(mEntries.file(file.getKey())));
            }
            mVersions.makeRoom(bytes, kept(update));
            recordIfComplete(update, null);
            mUpdate = update;
        } finally {
            publish();
            leave();
        }
        boolean begun = false;
        try {
            update.commitFinished();
            begun = true;
        } finally {
            if (!begun) {
                end(update);
            }
        }
        return update;
    }

    void activate(int version) throws IOException {
        enter();
        try {
            Version found = mVersions.table().find(version);
            if (found == null) {
                throw new IllegalArgumentException("no complete version: " + version);
            }
            if (found != mVersions.table().active()) {
                activate(found);
            }
        } finally {
            publish();
            leave();
        }
    }

    void trimExcept(int... versions) throws IOException {
        Set<Integer> numbers = new HashSet<>();
        for (int version : versions) {
            numbers.add(version);
        }
        enter();
        try {
            lockForWriting();
            VersionTable table = mVersions.table();
            List<Version> gone = new ArrayList<>();
            for (Version version : table.versions()) {
                if (version != table.active() && !numbers.contains(version.number())) {
                    gone.add(version);
                }
            }
            mEntries.dropUnfinished(mUpdate == null ? Collections.<String>emptySet()
                    : mUpdate.missingByName().keySet());
            if (!gone.isEmpty() && gone.size() < table.versions().size()) {
                mVersions.remove(gone, kept(mUpdate));
            }
        } finally {
            publish();
            leave();
        }
    }

    List<ModelFile> verify() throws IOException {
        enter();
        Map<String, ModelFile> files;
        try {
            files = mVersions.table().filesByName();
        } finally {
            leave();
        }
        Map<String, ModelFile> suspects = notMatching(files);
        enter();
        try {
            // Once more: some may have been deleted in the meantime, and got anew.
            suspects.keySet().retainAll(mVersions.table().names());
            Map<String, ModelFile> damaged = notMatching(suspects);
            mVersions.setDamaged(damaged.keySet());
            for (String name : mUpdate == null ? Collections.<String>emptySet() : damaged.keySet()) {
                mUpdate.setThere(name, false);
            }
            return new ArrayList<>(damaged.values());
        } finally {
            publish();
            leave();
        }
    }

    private Map<String, ModelFile> notMatching(Map<String, ModelFile> files) throws IOException {
        Map<String, ModelFile> others = new LinkedHashMap<>();
        for (Map.Entry<String, ModelFile> file : files.entrySet()) {
            if (!Digests.matches(file.getValue(), mEntries.file(file.getKey()))) {
                others.put(file.getKey(), file.getValue());
            }
        }
        return others;
    }

    // The rest is for the update and its writers.

    void enter() {
        mFiles.enter();
    }

    void leave() {
        mFiles.leave();
    }

    void requireRunning(Update update) {
        if (mUpdate != update || update.isEnding()) {
            throw new IllegalStateException("the update has ended");
        }
    }

    FileStore files() {
        return mFiles;
    }

    long lengthOfPart(String name) {
        return mEntries.part(name).length();
    }

    /** Makes what was written a file of the update's version. */
    void place(Update update, ModelWriter writer) throws IOException {
        enter();
        try {
            requireRunning(update);
            String name = writer.mName;
            mVersions.makeRoom(writer.size() - Disk.size(mEntries.file(name)), kept(update));
            mFiles.place(name);
            Set<String> damaged = new HashSet<>(mVersions.table().damaged());
            damaged.remove(name);
            mVersions.setDamaged(damaged);
            update.setThere(name, true);
            recordIfComplete(update, name);
        } finally {
            publish();
            leave();
        }
    }

    private void lockForWriting() throws IOException {
        if (mFiles.lockForWriting()) {
            mVersions.read();
        }
    }

    /** Under the lock. */
    void activate(Version version) throws IOException {
        lockForWriting();
        if (!version.isWhole(mFiles.root(), mCapability)
                || !Collections.disjoint(version.names().values(), mVersions.table().damaged())) {
            throw new IOException("version " + version.number() + " has lost or damaged files");
        }
        mVersions.put(version, true);
        publish();
    }

    void end(Update update) {
        mFiles.lock();
        try {
            if (mUpdate != update || update.isEnding()) {
                return;
            }
            update.setEnding();
        } finally {
            leave();
        }
        try {
            mFiles.writers().closeAll(); // while no other update can have any
        } finally {
            mFiles.lock();
            mUpdate = null;
            leave();
        }
    }

    private void publish() {
        mStore.publish(mVersions.table().snapshot());
    }

    /** A file of no version may have been left by an update that was killed, or by anybody. */
    private boolean isThere(ModelFile file, String name) throws IOException {
        VersionTable table = mVersions.table();
        boolean isTrusted = table.names().contains(name) && !table.damaged().contains(name);
        return mEntries.isFileOf(name, file.sizeBytes())
                && (isTrusted || Digests.matches(file, mEntries.file(name)));
    }

    /** Once all files are there, the version is one of the store's, unless it replaces another. */
    private void recordIfComplete(Update update, String lastName) throws IOException {
        Version version = update.version();
        if (!update.isComplete() || mVersions.table().find(version.number()) != null) {
            return;
        }
        boolean recorded = false;
        try {
            mVersions.put(version, false);
            recorded = true;
        } finally {
            if (!recorded && lastName != null && !mVersions.table().names().contains(lastName)) {
                update.setThere(lastName, false); // As if the commit had not begun.
                mEntries.takeBack(lastName);
            }
        }
    }

    /** The names of entries that room must not be made of. */
    private Set<String> kept(Update update) {
        Set<String> kept = new HashSet<>();
        Version active = mVersions.table().active();
        if (active != null) {
            kept.addAll(active.names().values());
        }
        if (update != null) {
            kept.addAll(update.version().names().values());
        }
        return kept;
    }
}
