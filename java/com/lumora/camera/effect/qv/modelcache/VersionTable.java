package com.lumora.camera.effect.qv.modelcache;

import java.io.File;
import java.io.IOException;
import java.io.RandomAccessFile;
import java.nio.charset.Charset;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.Collection;
import java.util.Collections;
import java.util.LinkedHashMap;
import java.util.List;
import java.util.Map;
import java.util.Set;
import java.util.zip.CRC32;

/**
 * The complete versions of a root and which of them is active. Immutable.
 *
 * <p>It lies on disk twice, in places that rarely go together: as {@code .versions}, and as the
 * extra bytes of the index that the native caches keep. It says, too, what the records of the native
 * caches looked like when it was written.
 */
final class VersionTable {
    /** A complete version: its files in the order of their types, with the names of their entries. */
    static final class Version {
        private final int mNumber;
        private final Map<ModelFile, String> mNames;

        Version(int number, Map<ModelFile, String> names) {
            mNumber = number;
            mNames = names;
        }

        int number() {
            return mNumber;
        }

        Map<ModelFile, String> names() {
            return mNames;
        }

        /** Whether all files are there, as far as their sizes tell. */
        boolean isWhole(File root) {
            for (Map.Entry<ModelFile, String> file : mNames.entrySet()) {
                File entry = new File(root, file.getValue());
                if (entry.length() != file.getKey().sizeBytes() || !entry.isFile()) {
                    return false;
                }
            }
            return true;
        }
    }

    static final String NAME = ".versions";
    private static final String COPY = "extra/versioned_index";
    private static final Charset UTF_8 = Charset.forName("UTF-8");
    private static final String CHECK = "check ";

    private final File mRoot;
    private final Capability mCapability;
    private final long mSequence;
    private final Version mActive;
    private final List<Version> mVersions;
    private final String mRecords;
    private final Map<String, String> mPaths;

    /** Without any version. */
    VersionTable(File root, Capability capability) {
        this(root, capability, 0, null, Collections.<Version>emptyList(), "");
    }

    private VersionTable(File root, Capability capability, long sequence, Integer active,
            List<Version> versions, String records) {
        mRoot = root;
        mCapability = capability;
        mSequence = sequence;
        mVersions = versions;
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
        byte[] bytes = bytesOf(new File(root, NAME));
        VersionTable table = parse(root, capability, bytes);
        if (table == null || !Arrays.equals(bytes, bytesOf(new File(root, COPY)))
                || !table.mRecords.equals(recordsOf(root))) {
            return null;
        }
        for (Version version : table.mVersions) {
            if (!version.isWhole(root)) {
                return null;
            }
        }
        return table;
    }

    /** The newest table that a root has, whatever else is to be said of it; null if it has none. */
    static VersionTable newest(File root, Capability capability) throws IOException {
        VersionTable first = parse(root, capability, bytesOf(new File(root, NAME)));
        VersionTable second = parse(root, capability, bytesOf(new File(root, COPY)));
        boolean isFirst = second == null || first != null && first.mSequence >= second.mSequence;
        return isFirst ? first : second;
    }

    /** Whether a root has two different tables, or one. */
    static boolean haveCopiesParted(File root) throws IOException {
        return !Arrays.equals(bytesOf(new File(root, NAME)), bytesOf(new File(root, COPY)));
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

    /** The name of the entry with these bytes, or null if it is in no version. */
    String nameOf(String sha256) {
        for (Map.Entry<String, ModelFile> file : filesByName().entrySet()) {
            if (file.getValue().sha256().equals(sha256)) {
                return file.getKey();
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

    /** With the version as the last one, in place of the one of its number. */
    VersionTable with(Version version, boolean active) {
        Version earlier = find(version.number());
        List<Version> versions = new ArrayList<>(mVersions);
        versions.remove(earlier);
        versions.add(version);
        return new VersionTable(mRoot, mCapability, mSequence,
                active ? Integer.valueOf(version.number()) : activeNumber(), versions, mRecords);
    }

    VersionTable without(Collection<Version> gone) {
        List<Version> versions = new ArrayList<>(mVersions);
        versions.removeAll(gone);
        return new VersionTable(mRoot, mCapability, mSequence,
                gone.contains(mActive) ? null : activeNumber(), versions, mRecords);
    }

    /** The same, to be written after this. */
    VersionTable next(String records) {
        return new VersionTable(mRoot, mCapability, mSequence + 1, activeNumber(), mVersions,
                records);
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
        return parseLines(new VersionTable(root, capability), checked.split("\n"));
    }

    private static VersionTable parseLines(VersionTable empty, String[] lines) {
        long sequence = 0;
        Integer active = null;
        List<Version> versions = new ArrayList<>();
        Map<ModelFile, String> names = null; // of the last version so far
        for (String line : lines) {
            String[] words = line.split(" ");
            switch (words[0]) {
                case "capability":
                    empty.requireCapability(words[1]);
                    break;
                case "sequence":
                    sequence = Long.parseLong(words[1]);
                    break;
                case "version":
                    names = new LinkedHashMap<>();
                    versions.add(new Version(Integer.parseInt(words[1]), names));
                    break;
                case "file":
                    names.put(new ModelFile(words[1], Long.parseLong(words[2]), words[3]), words[4]);
                    break;
                case "active":
                    active = Integer.valueOf(words[1]);
                    break;
                default:
            }
        }
        return new VersionTable(empty.mRoot, empty.mCapability, sequence, active, versions,
                lines[lines.length - 1].substring("records ".length()));
    }

    private void requireCapability(String name) {
        if (!mCapability.name().equals(name)) {
            throw new IllegalArgumentException(mRoot + " has the models of " + name + ", not of "
                    + mCapability);
        }
    }

    /** The bytes of a small file, or null if there is none. */
    static byte[] bytesOf(File file) throws IOException {
        if (!file.isFile()) {
            return null;
        }
        byte[] bytes = new byte[(int) Math.min(file.length(), 1 << 30)];
        try (RandomAccessFile in = new RandomAccessFile(file, "r")) {
            in.readFully(bytes);
        }
        return bytes;
    }

    private static String indexOf(File root) {
        return sumOf(new File(root, "versioned_index"));
    }

    private static String sumOf(File file) {
        if (!file.exists()) {
            return "none";
        }
        try {
            byte[] bytes = bytesOf(file);
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
