package com.lumora.camera.effect.qv.modelcache;

import java.io.File;
import java.io.IOException;
import java.nio.charset.Charset;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.Collection;
import java.util.Collections;
import java.util.HashSet;
import java.util.LinkedHashMap;
import java.util.List;
import java.util.Map;
import java.util.Set;
import java.util.zip.CRC32;

/**
 * The complete versions of a root and which of them is active. Immutable.
 *
 * <p>It lies on disk twice, in places that rarely go together: as {@code .versions} and as
 * {@code extra/.versions}. It says, too, what the records of the native caches looked like when it
 * was written.
 */
final class VersionTable {
    static final String NAME = ".versions";
    private static final String COPY = "extra/" + NAME;
    private static final Charset UTF_8 = Charset.forName("UTF-8");
    private static final String CHECK = "check ";

    private final File mRoot;
    private final Capability mCapability;
    private final long mSequence;
    private final Version mActive;
    private final List<Version> mVersions;
    private final Set<String> mDamaged;
    private final String mRecords;
    private final Map<String, String> mPaths;

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
        Map<String, String> paths = new LinkedHashMap<>();
        if (mActive != null) {
            for (Map.Entry<ModelFile, String> file : mActive.names().entrySet()) {
                paths.put(file.getKey().type(), new File(root, file.getValue()).getPath());
            }
        }
        mPaths = Collections.unmodifiableMap(paths);
    }

    /** The table of a root in which everything is as it was left; null of any other. */
    static VersionTable asLeft(File root, Capability capability) throws IOException {
        byte[] bytes = Disk.bytesOf(new File(root, NAME));
        VersionTable table = parse(root, capability, bytes);
        if (table == null || !Arrays.equals(bytes, Disk.bytesOf(new File(root, COPY)))
                || !table.mRecords.equals(recordsOf(root))) {
            return null;
        }
        for (Version version : table.mVersions) {
            if (!version.isWhole(root, capability)) {
                return null;
            }
        }
        return table;
    }

    /** The newest table that a root has, whatever else is to be said of it; null if it has none. */
    static VersionTable newest(File root, Capability capability) throws IOException {
        VersionTable first = parse(root, capability, Disk.bytesOf(new File(root, NAME)));
        VersionTable second = parse(root, capability, Disk.bytesOf(new File(root, COPY)));
        boolean isFirst = second == null || first != null && first.mSequence >= second.mSequence;
        return isFirst ? first : second;
    }

    /** Whether a root has two different tables, or one. */
    static boolean haveCopiesParted(File root) throws IOException {
        return !Arrays.equals(Disk.bytesOf(new File(root, NAME)), Disk.bytesOf(new File(root, COPY)));
    }

    /** What the records of the native caches look like: a text that changes with them. */
    static String recordsOf(File root) {
        return sumOf(new File(root, "metadata.json")) + " " + indexOf(root);
    }

    /** Whether the index looked like that when the table was written. */
    boolean isIndexAsLeft() {
        return mRecords.endsWith(" " + indexOf(mRoot));
    }

    boolean areRecordsAsLeft() {
        return mRecords.equals(recordsOf(mRoot));
    }

    /** From each type to the path of its file in the active version. */
    Map<String, String> paths() {
        return mPaths;
    }

    /** The active version, or null. */
    Version active() {
        return mActive;
    }

    /** The number of the active version, or null. */
    Integer activeNumber() {
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

    /** In ascending order. */
    List<Integer> numbers() {
        List<Integer> numbers = new ArrayList<>();
        for (Version version : mVersions) {
            numbers.add(version.number());
        }
        Collections.sort(numbers);
        return Collections.unmodifiableList(numbers);
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
        text.append("capability ").append(mCapability).append('\n');
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
        return (text + CHECK + sumOf(text.toString().getBytes(UTF_8)) + '\n').getBytes(UTF_8);
    }

    /** Null if the text is damaged, or not there. */
    private static VersionTable parse(File root, Capability capability, byte[] bytes) {
        if (bytes == null) {
            return null;
        }
        String text = new String(bytes, UTF_8);
        int check = Math.max(0, text.lastIndexOf(CHECK));
        String checked = text.substring(0, check);
        if (!text.equals(checked + CHECK + sumOf(checked.getBytes(UTF_8)) + '\n')) {
            return null;
        }
        String[] lines = checked.split("\n");
        String owner = "capability " + capability;
        if (lines[0].startsWith("capability ") && !lines[0].equals(owner)) {
            throw new IllegalArgumentException(root + " has the models of "
                    + lines[0].substring("capability ".length()) + ", not of " + capability);
        }
        try {
            return new VersionTable(root, capability).withLines(lines);
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
                            requireName(words[4]));
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

    /** Whoever can write to a root can make up a table, but not lead the store out of the root. */
    private static String requireName(String name) {
        if (name.charAt(0) == '.' || name.indexOf('/') >= 0) {
            throw new IllegalArgumentException(name);
        }
        return name;
    }

    private static String indexOf(File root) {
        return sumOf(new File(root, "versioned_index"));
    }

    private static String sumOf(File file) {
        if (!file.exists()) {
            return "none";
        }
        try {
            byte[] bytes = Disk.bytesOf(file);
            return bytes == null ? "unreadable" : sumOf(bytes);
        } catch (IOException failure) {
            return "unreadable";
        }
    }

    private static String sumOf(byte[] bytes) {
        CRC32 sum = new CRC32();
        sum.update(bytes, 0, bytes.length);
        return Long.toHexString(sum.getValue());
    }
}
