package com.lumora.camera.effect.qv.modelcache;

import java.io.IOException;
import java.util.ArrayList;
import java.util.Collections;
import java.util.HashMap;
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
    private final Set<String> mDamaged = new HashSet<>(); // names of entries with wrong bytes
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
        List<ModelFile> ordered = inOrder(files);
        Update update;
        enter();
        try {
            if (mUpdate != null) {
                throw new IllegalStateException("an update to version "
                        + mUpdate.version().number() + " is running");
            }
            mFiles.requireForWriting();
            update = newUpdate(version, ordered);
            requireBudget(update.version());
            Map<String, ModelFile> missing = update.missingByName();
            mEntries.dropParts(missing.keySet());
            long bytes = 0;
            for (ModelFile file : missing.values()) {
                bytes += file.sizeBytes();
            }
            mVersions.makeRoom(bytes, kept(update));
            mUpdate = update;
        } finally {
            publish();
            leave();
        }
        update.commitFinished();
        return update;
    }

    void activate(int version) throws IOException {
        enter();
        try {
            VersionTable.Version found = mVersions.table().find(version);
            if (found == null) {
                throw new IllegalArgumentException("no complete version: " + version);
            }
            if (found != mVersions.table().active()) {
                activate(found);
            }
        } finally {
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
            mFiles.requireForWriting();
            VersionTable table = mVersions.table();
            List<VersionTable.Version> gone = new ArrayList<>();
            for (VersionTable.Version version : table.versions()) {
                if (version != table.active() && !numbers.contains(version.number())) {
                    gone.add(version);
                }
            }
            mEntries.dropParts(mUpdate == null ? Collections.<String>emptySet()
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
            mDamaged.addAll(damaged.keySet());
            return new ArrayList<>(damaged.values());
        } finally {
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
        if (mUpdate != update) {
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
            mVersions.makeRoom(writer.size() - mEntries.file(name).length(), kept(update));
            mFiles.place(name);
            mDamaged.remove(name);
            update.setThere(name, true);
            recordIfComplete(update, name);
        } finally {
            publish();
            leave();
        }
    }

    /** Under the lock. */
    void activate(VersionTable.Version version) throws IOException {
        mFiles.requireForWriting();
        if (!version.isWhole(mFiles.root())) {
            throw new IOException("version " + version.number() + " has lost files");
        }
        mVersions.put(version, true);
        publish();
    }

    void end(Update update) {
        boolean running;
        mFiles.lock();
        try {
            running = mUpdate == update;
            mUpdate = running ? null : mUpdate;
        } finally {
            leave();
        }
        if (running) {
            mFiles.closeWriters();
        }
    }

    private void publish() {
        mStore.publish(mVersions.table());
    }

    private List<ModelFile> inOrder(List<ModelFile> files) {
        Map<String, ModelFile> byType = new HashMap<>();
        for (ModelFile file : files) {
            if (!mCapability.types().contains(file.type())) {
                throw new IllegalArgumentException("not a type of " + mCapability + ": " + file);
            }
            if (byType.put(file.type(), file) != null) {
                throw new IllegalArgumentException("two files of one type: " + file);
            }
        }
        List<ModelFile> ordered = new ArrayList<>();
        for (String type : mCapability.types()) {
            if (!byType.containsKey(type)) {
                throw new IllegalArgumentException("no file of the type " + type);
            }
            ordered.add(byType.get(type));
        }
        return ordered;
    }

    private Update newUpdate(int number, List<ModelFile> files) throws IOException {
        Map<String, String> namesByDigest = new HashMap<>();
        Map<ModelFile, String> names = new LinkedHashMap<>();
        Update update = new Update(this, new VersionTable.Version(number, names));
        for (ModelFile file : files) {
            String name = namesByDigest.get(file.sha256());
            if (name == null) {
                String known = mVersions.table().nameOf(file.sha256());
                name = known != null ? known : file.sha256() + "-" + file.type();
                update.setThere(name, isThere(file, name, known != null));
                namesByDigest.put(file.sha256(), name);
            }
            names.put(file, name);
        }
        return update;
    }

    /** A file of no version may have been left by an update that was killed, or by anybody. */
    private boolean isThere(ModelFile file, String name, boolean isKnown) throws IOException {
        return mEntries.isFileOf(name, file.sizeBytes()) && !mDamaged.contains(name)
                && (isKnown || Digests.matches(file, mEntries.file(name)));
    }

    private void requireBudget(VersionTable.Version version) throws IOException {
        VersionTable.Version active = mVersions.table().active();
        Map<String, Long> sizes = new HashMap<>();
        long alone = addSizes(version, sizes);
        long together = active == null ? alone : addSizes(active, sizes);
        if (together > mFiles.maxSizeBytes()) {
            throw new IOException("version " + version.number() + " has " + alone + " bytes"
                    + (active == null ? "" : ", " + together + " together with the active version "
                    + active.number()) + ", and the budget is " + mFiles.maxSizeBytes());
        }
    }

    /** Adds a version's files and returns the sum of all. */
    private static long addSizes(VersionTable.Version version, Map<String, Long> sizes) {
        for (Map.Entry<ModelFile, String> file : version.names().entrySet()) {
            sizes.put(file.getValue(), file.getKey().sizeBytes());
        }
        long sum = 0;
        for (long size : sizes.values()) {
            sum += Math.min(size, Long.MAX_VALUE - sum);
        }
        return sum;
    }

    /** Once all files are there, the version is one of the store's, unless it replaces another. */
    private void recordIfComplete(Update update, String lastName) throws IOException {
        VersionTable.Version version = update.version();
        if (!update.isComplete() || mVersions.table().find(version.number()) != null) {
            return;
        }
        boolean recorded = false;
        try {
            mVersions.put(version, false);
            recorded = true;
        } finally {
            if (!recorded) { // As if the commit had not begun.
                update.setThere(lastName, false);
                mEntries.takeBack(lastName);
            }
        }
    }

    /** The names of entries that room must not be made of. */
    private Set<String> kept(Update update) {
        Set<String> kept = new HashSet<>();
        VersionTable.Version active = mVersions.table().active();
        if (active != null) {
            kept.addAll(active.names().values());
        }
        if (update != null) {
            kept.addAll(update.version().names().values());
        }
        return kept;
    }
}
