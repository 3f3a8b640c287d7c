package com.lumora.camera.effect.qv.modelcache;

import java.io.File;
import java.io.IOException;
import java.io.RandomAccessFile;
import java.nio.charset.Charset;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.Collections;
import java.util.HashMap;
import java.util.LinkedHashMap;
import java.util.List;
import java.util.Map;
import java.util.zip.CRC32;

/**
 * What a store tells without asking the disk. Immutable.
 *
 * <p>An app that only asks for its paths needs no other class to read the table of versions: this
 * makes few objects in few passes, since at the start of an app each class is loaded from its archive
 * and each loop is interpreted.
 */
final class Snapshot {
    /** The table of versions, and a copy in a place that rarely goes with it. */
    static final String NAME = ".versions";
    static final String COPY = "extra/" + NAME;

    static final Charset UTF_8 = Charset.forName("UTF-8");
    private static final String CAPABILITY = "capability ";
    private static final String CHECK = "check ";

    final Map<String, String> paths;
    final Integer active;
    final List<Integer> versions;

    Snapshot(Map<String, String> paths, Integer active, List<Integer> versions) {
        this.paths = Collections.unmodifiableMap(paths);
        this.active = active;
        Collections.sort(versions);
        this.versions = Collections.unmodifiableList(versions);
    }

    /** What is told of a root in which everything is as it was left; null of any other. */
    static Snapshot asLeft(File root, Capability capability) throws IOException {
        byte[] bytes = bytesOf(new File(root, NAME));
        String[] lines = linesOf(root, capability, bytes);
        if (lines == null || !Arrays.equals(bytes, bytesOf(new File(root, COPY)))) {
            return null;
        }
        try {
            return read(root, capability, lines);
        } catch (RuntimeException malformed) { // although the check is right
            return null;
        }
    }

    private static Snapshot read(File root, Capability capability, String[] lines) {
        Map<Integer, Map<String, String>> versions = new HashMap<>();
        Map<String, String> paths = null; // of the last version so far
        Integer active = null;
        boolean areRecordsAsLeft = false;
        for (String line : lines) {
            String[] words = line.split(" ");
            if (words[0].equals("version")) {
                paths = new LinkedHashMap<>();
                versions.put(Integer.valueOf(words[1]), paths);
            } else if (words[0].equals("file")) {
                File entry = new File(root, requireName(words[4]));
                if (entry.length() != Long.parseLong(words[2]) || !entry.isFile()) {
                    return null;
                }
                paths.put(words[1], entry.getPath());
            } else if (words[0].equals("active")) {
                active = Integer.valueOf(words[1]);
            } else if (words[0].equals("records")) {
                areRecordsAsLeft = recordsOf(root).equals(words[1] + ' ' + words[2]);
            }
        }
        for (Map<String, String> each : versions.values()) {
            areRecordsAsLeft &= capability.types().equals(new ArrayList<>(each.keySet()));
        }
        paths = active == null ? new HashMap<String, String>() : versions.get(active);
        return areRecordsAsLeft
                ? new Snapshot(paths, active, new ArrayList<>(versions.keySet())) : null;
    }

    /**
     * The lines of a table, between the one of its capability and the check; null if it is damaged, or
     * not there.
     *
     * @throws IllegalArgumentException if it is of another capability
     */
    static String[] linesOf(File root, Capability capability, byte[] bytes) {
        if (bytes == null) {
            return null;
        }
        String text = new String(bytes, UTF_8);
        int check = text.lastIndexOf(CHECK);
        if (check < 0 || text.length() != bytes.length // All of it is ASCII.
                || !text.substring(check).equals(checkOf(bytes, check))) {
            return null;
        }
        String[] lines = text.substring(0, check).split("\n");
        if (lines[0].startsWith(CAPABILITY) && !lines[0].equals(CAPABILITY + capability)) {
            throw new IllegalArgumentException(root + " has the models of "
                    + lines[0].substring(CAPABILITY.length()) + ", not of " + capability);
        }
        return lines;
    }

    /** The bytes of a table of these lines, each with its end. */
    static byte[] bytesOf(Capability capability, String lines) {
        String text = CAPABILITY + capability + '\n' + lines;
        byte[] bytes = text.getBytes(UTF_8);
        return (text + checkOf(bytes, bytes.length)).getBytes(UTF_8);
    }

    /** Whoever can write to a root can make up a table, but not lead the store out of the root. */
    static String requireName(String name) {
        if (name.charAt(0) == '.' || name.indexOf('/') >= 0) {
            throw new IllegalArgumentException(name);
        }
        return name;
    }

    /** What the records of the native caches look like: a text that changes with them. */
    static String recordsOf(File root) {
        return sumOf(new File(root, "metadata.json")) + " " + indexOf(root);
    }

    /** What their index looks like. */
    static String indexOf(File root) {
        return sumOf(new File(root, "versioned_index"));
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

    private static String checkOf(byte[] bytes, int length) {
        return CHECK + sumOf(bytes, length) + '\n';
    }

    private static String sumOf(File file) {
        if (!file.exists()) {
            return "none";
        }
        try {
            byte[] bytes = bytesOf(file);
            return bytes == null ? "unreadable" : sumOf(bytes, bytes.length);
        } catch (IOException failure) {
            return "unreadable";
        }
    }

    private static String sumOf(byte[] bytes, int length) {
        CRC32 sum = new CRC32();
        sum.update(bytes, 0, length);
        return Long.toHexString(sum.getValue());
    }
}
