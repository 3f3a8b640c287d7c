package com.lumora.camera.effect.qv.modelcache;

import java.io.File;
import java.io.IOException;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.Collection;
import java.util.Collections;
import java.util.HashSet;
import java.util.LinkedHashMap;
import java.util.List;
import java.util.Map;
import java.util.Set;

/**
 * The complete versions of a root and which of them is active. Immutable.
 *
 * <p>It lies on disk twice, in places that rarely go together: as {@code .versions} and as
 * {@code extra/.versions}. It says, too, what the records of the native caches looked like when it
 * was written.
 */
final class VersionTable {
    private final File mRoot;
    private final Capability mCapability;
    private final long mSequence;
    private final Version mActive;
    private final List<Version> mVersions;
    private final Set<String> mDamaged;
    private final String mRecords;

    /** Without any version. */
    VersionTable(File root, Capability capability) {
        this(root, capability, 0, null, Collections.<Version>emptyList(),
                Collections.<String>emptySet(), "");
    }

    private VersionTable(File root, Capability capability, long sequence, Integer active,
            List<Version> versions, Set<String> damaged, String records) {
        mRoot = root;
        mCapability = capability;
        mSequence = sequence;
        mVersions = versions;
        mDamaged = damaged;
        mRecords = records;
        mActive = active == null ? null : find(active);
    }

    /** The newest table that a root has, whatever else is to be said of it; null if it has none. */
    static VersionTable newest(File root, Capability capability) throws IOException {
        VersionTable first = read(root, capability, Snapshot.NAME);
        VersionTable second = read(root, capability, Snapshot.COPY);
        boolean isFirst = second == null || first != null && first.mSequence >= second.mSequence;
        return isFirst ? first : second;
    }

    /** Whether a root has two different tables, or one. */
    static boolean haveCopiesParted(File root) throws IOException {
        return !Arrays.equals(Snapshot.bytesOf(new File(root, Snapshot.NAME)),
                Snapshot.bytesOf(new File(root, Snapshot.COPY)));
    }

    /** Whether the index looked like that when the table was written. */
    boolean isIndexAsLeft() {
        return mRecords.endsWith(" " + Snapshot.indexOf(mRoot));
    }

    boolean areRecordsAsLeft() {
        return mRecords.equals(Snapshot.recordsOf(mRoot));
    }

    /** What the store tells without asking the disk. */
    Snapshot snapshot() {
        Map<String, String> paths = new LinkedHashMap<>();
        if (mActive != null) {
            for (Map.Entry<ModelFile, String> file : mActive.names().entrySet()) {
                paths.put(file.getKey().type(), new File(mRoot, file.getValue()).getPath());
            }
        }
        List<Integer> numbers = new ArrayList<>();
        for (Version version : mVersions) {
            numbers.add(version.number());
        }
        return new Snapshot(paths, activeNumber(), numbers);
    }

    /** The active version, or null. */
    Version active() {
        return mActive;
    }

    private Integer activeNumber() {
        return mActive == null ? null : mActive.number();
    }

    /** The one that was completed or activated last comes last. */
    List<Version> versions() {
        return mVersions;
    }

    /** The last one of them, or null. */
    Version last() {
        return mVersions.isEmpty() ? null : mVersions.get(mVersions.size() - 1);
    }

    /** The version of that number, or null. */
    Version find(int number) {
        for (Version version : mVersions) {
            if (version.number() == number) {
                return version;
            }
        }
        return null;
    }

    /** The files of all versions by the names of their entries. */
    Map<String, ModelFile> filesByName() {
        Map<String, ModelFile> files = new LinkedHashMap<>();
        for (Version version : mVersions) {
            for (Map.Entry<ModelFile, String> file : version.names().entrySet()) {
                files.put(file.getValue(), file.getKey());
            }
        }
        return files;
    }

    /** The names of the entries of all versions. */
    Set<String> names() {
        return filesByName().keySet();
    }

    /** The names of entries that were found to have wrong bytes. */
    Set<String> damaged() {
        return mDamaged;
    }

    /** With the version as the last one, in place of the one of its number. */
    VersionTable with(Version version, boolean active) {
        List<Version> versions = new ArrayList<>(mVersions);
        versions.remove(find(version.number()));
        versions.add(version);
        return changed(active ? Integer.valueOf(version.number()) : activeNumber(), versions, mDamaged);
    }

    VersionTable without(Collection<Version> gone) {
        List<Version> versions = new ArrayList<>(mVersions);
        versions.removeAll(gone);
        return changed(gone.contains(mActive) ? null : activeNumber(), versions, mDamaged);
    }

    /** With other entries having wrong bytes. */
    VersionTable withDamaged(Set<String> names) {
        return changed(activeNumber(), mVersions, names);
    }

    private VersionTable changed(Integer active, List<Version> versions, Set<String> damaged) {
        return new VersionTable(mRoot, mCapability, mSequence, active, versions, damaged, mRecords);
    }

    /** The same, to be written after this. */
    VersionTable next(String records) {
        Set<String> damaged = new HashSet<>(mDamaged);
        damaged.retainAll(names());
        return new VersionTable(mRoot, mCapability, mSequence + 1, activeNumber(), mVersions,
                damaged, records);
    }

    byte[] toBytes() {
        StringBuilder text = new StringBuilder();
        text.append("sequence ").append(mSequence).append('\n');
        for (Version version : mVersions) {
            text.append("version ").append(version.number()).append('\n');
            for (Map.Entry<ModelFile, String> file : version.names().entrySet()) {
                text.append("file ").append(file.getKey().type()).append(' ')
                        .append(file.getKey().sizeBytes()).append(' ')
                        .append(file.getKey().sha256()).append(' ')
                        .append(file.getValue()).append('\n');
            }
        }
        for (String name : mDamaged) {
            text.append("damaged ").append(name).append('\n');
        }
        if (mActive != null) {
            text.append("active ").append(mActive.number()).append('\n');
        }
        text.append("records ").append(mRecords).append('\n');
        return Snapshot.bytesOf(mCapability, text.toString());
    }

    /** Null if it is damaged, or not there. */
    private static VersionTable read(File root, Capability capability, String name)
            throws IOException {
        byte[] bytes = Snapshot.bytesOf(new File(root, name));
        String[] lines = Snapshot.linesOf(root, capability, bytes);
        try {
            return lines == null ? null : new VersionTable(root, capability).withLines(lines);
        } catch (RuntimeException malformed) { // although the check is right
            return null;
        }
    }

    private VersionTable withLines(String[] lines) {
        long sequence = 0;
        Integer active = null;
        List<Version> versions = new ArrayList<>();
        Map<ModelFile, String> names = null; // of the last version so far
        Set<String> damaged = new HashSet<>();
        String records = "";
        for (String line : lines) {
            String[] words = line.split(" ");
            switch (words[0]) {
                case "sequence":
                    sequence = Long.parseLong(words[1]);
                    break;
                case "version":
                    names = new LinkedHashMap<>();
                    versions.add(new Version(Integer.parseInt(words[1]), names));
                    break;
                case "file":
                    names.put(new ModelFile(words[1], Long.parseLong(words[2]), words[3]),
                            Snapshot.requireName(words[4]));
                    break;
                case "damaged":
                    damaged.add(words[1]);
                    break;
                case "active":
                    active = Integer.valueOf(words[1]);
                    break;
                case "records":
                    records = words[1] + ' ' + words[2];
                    break;
                default:
            }
        }
        return new VersionTable(mRoot, mCapability, sequence, active, versions, damaged, records);
    }
}
