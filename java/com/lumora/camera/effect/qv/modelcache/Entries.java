package com.lumora.camera.effect.qv.modelcache;

import java.io.File;
import java.io.IOException;
import java.util.Arrays;
import java.util.Collections;
import java.util.Comparator;
import java.util.Set;

/**
 * The entries of a root, by the names of their files, as they lie on disk. Callers see to it that
 * only one thread at a time changes them.
 */
final class Entries {
    /** The entry in which the native model caches keep their index. */
    static final String INDEX = "versioned_index";

    private static final String METADATA = "metadata.json";
    private static final String EXTRA = "extra";

    // How the names begin of what is on its way to become an entry, or what belongs to one.
    private static final String PART = ".part-";
    private static final String NEW = ".new-";
    private static final String NEW_EXTRA = ".new-extra-";
    private static final String OLD_EXTRA = ".old-extra-";

    private static final int LONGEST_NAME = 255 - OLD_EXTRA.length();
    private static final long SECOND = 1000;

    private final File mRoot;
    private final File mExtras;
    private final Disk mDisk;
    private long mNewest;

    Entries(File root, Disk disk) {
        mRoot = root;
        mExtras = new File(root, EXTRA);
        mDisk = disk;
    }

    /**
     * The name of a key's file: of a letter, a digit and each of "-_." itself, of all other
     * characters a percent sign and the number, so that no key means anything to a file system.
     */
    static String nameOf(String key) {
        StringBuilder name = new StringBuilder(isOwn(key) ? "%" : "");
        for (int i = 0; i < key.length(); ++i) {
            char c = key.charAt(i);
            boolean isPlain = c >= 'a' && c <= 'z' || c >= 'A' && c <= 'Z' || c >= '0' && c <= '9'
                    || c == '-' || c == '_' || c == '.' && i > 0;
            name.append(isPlain ? String.valueOf(c) : String.format("%%%04X", (int) c));
        }
        if (name.length() == 0 || name.length() > LONGEST_NAME) {
            throw new IllegalArgumentException("the file name of a key has 1 to " + LONGEST_NAME
                    + " characters, and not " + name.length() + ": " + key);
        }
        return name.toString();
    }

    File file(String name) {
        return new File(mRoot, name);
    }

    /** Where an entry is written. */
    File part(String name) {
        return new File(mRoot, PART + name);
    }

    /** Whether there is such an entry; what cannot be told is thrown. */
    boolean has(String name) throws IOException {
        // What is said not to exist may also be out of reach.
        return file(name).exists() || Arrays.asList(names()).contains(name);
    }

    /** Whether the entry is a file of that many bytes. */
    boolean isFileOf(String name, long bytes) {
        File file = file(name);
        return file.length() == bytes && file.isFile();
    }

    /** Bytes of all entries together. */
    long size() throws IOException {
        return size(all());
    }

    /**
     * Makes a part the entry, in place of an earlier one and of its extra bytes. If it throws, either
     * the earlier one is there with its extra bytes or, when only the last sync failed, the new one.
     */
    void place(String name) throws IOException {
        File extra = new File(mExtras, name);
        File aside = file(OLD_EXTRA + name);
        boolean hadExtra = extra.exists();
        if (hadExtra) {
            mDisk.syncFolder(mRoot); // As long as there is the part, what is aside belongs back.
            mDisk.rename(extra, aside);
            mDisk.syncFolder(mRoot);
            mDisk.syncFolder(mExtras);
        }
        boolean placed = false;
        try {
            mDisk.rename(part(name), file(name));
            placed = true;
        } finally {
            if (hadExtra && !placed) {
                mDisk.rename(aside, extra);
            }
        }
        mDisk.syncFolder(mRoot);
        touch(name);
        if (hadExtra) {
            mDisk.delete(aside);
        }
    }

    /** Before an entry is written: what is aside of it would otherwise seem to belong back. */
    void dropOldExtra(String name) throws IOException {
        File aside = file(OLD_EXTRA + name);
        if (aside.exists()) {
            mDisk.delete(aside);
            mDisk.syncFolder(mRoot);
        }
    }

    /** Undoes {@link #place} of an entry that was not there before. */
    void takeBack(String name) throws IOException {
        mDisk.rename(file(name), part(name));
    }

    /**
     * Makes an entry the last one used. The order is kept in the dates of the files; it is strict,
     * whatever the clock does.
     */
    synchronized void touch(String name) throws IOException {
        if (mNewest == 0) {
            for (File entry : all()) {
                mNewest = Math.max(mNewest, entry.lastModified());
            }
        }
        File entry = file(name);
        mNewest = Math.max(mNewest + 1, System.currentTimeMillis());
        if (entry.setLastModified(mNewest) && entry.lastModified() < mNewest) {
            mNewest += SECOND - mNewest % SECOND; // on a system that keeps no fractions
            entry.setLastModified(mNewest);
        }
    }

    /**
     * Deletes the entries that were not used for longest, until {@code bytes} more fit the budget.
     *
     * @param kept the names of entries that stay
     */
    void makeRoom(long bytes, long budget, Set<String> kept) throws IOException {
        File[] entries = all();
        long total = size(entries);
        if (bytes > budget - total) {
            sortByAge(entries);
        }
        for (int i = 0; bytes > budget - total; ++i) {
            if (i == entries.length) {
                throw new IOException("no room for " + bytes + " bytes in " + mRoot + ": " + total
                        + " of " + budget + " are taken by what has to stay");
            }
            if (!kept.contains(entries[i].getName())) {
                total -= Disk.size(entries[i]);
                drop(Collections.singleton(entries[i].getName()));
            }
        }
    }

    /** Deletes entries and their extra bytes. */
    void drop(Iterable<String> names) throws IOException {
        for (String name : names) {
            mDisk.delete(file(name));
            mDisk.delete(new File(mExtras, name));
        }
    }

    /**
     * Ends what was begun and not ended: deletes it, or takes it back.
     *
     * @param kept the names of entries whose parts stay
     */
    void dropUnfinished(Set<String> kept) throws IOException {
        for (String each : names()) {
            if (each.startsWith(OLD_EXTRA)) {
                String name = each.substring(OLD_EXTRA.length());
                if (part(name).exists()) {
                    mDisk.rename(file(each), new File(mExtras, name));
                    mDisk.syncFolder(mExtras);
                } else {
                    mDisk.delete(file(each));
                }
            }
        }
        for (String each : names()) {
            if (each.startsWith(NEW)
                    || each.startsWith(PART) && !kept.contains(each.substring(PART.length()))) {
                mDisk.delete(file(each));
            }
        }
    }

    /** The extra bytes of an entry, or null if it has none. */
    byte[] extra(String name) throws IOException {
        return Snapshot.bytesOf(new File(mExtras, name));
    }

    void replaceExtra(String name, byte[] bytes) throws IOException {
        if (mExtras.exists() && !mExtras.isDirectory()) {
            mDisk.delete(mExtras);
            SoftErrors.report("replaceExtra", "deleted " + mExtras + ", which was no folder");
        }
        mDisk.createFolder(mExtras);
        mDisk.replace(new File(mExtras, name), bytes, file(NEW_EXTRA + name));
    }

    /** Writes what is to take the place of a file that is no entry. Replaces nothing yet. */
    void prepareOwn(String name, byte[] bytes) throws IOException {
        mDisk.prepare(file(NEW + name), bytes);
    }

    void replaceOwn(String name) throws IOException {
        mDisk.rename(file(NEW + name), file(name));
        mDisk.syncFolder(mRoot);
    }

    private String[] names() throws IOException {
        String[] names = mRoot.list();
        if (names == null) {
            throw new IOException("cannot be read: " + mRoot);
        }
        return names;
    }

    private File[] all() throws IOException {
        String[] names = names();
        File[] entries = new File[names.length];
        int count = 0;
        for (String name : names) {
            if (!name.startsWith(".") && !isOwn(name)) {
                entries[count++] = file(name);
            }
        }
        return Arrays.copyOf(entries, count);
    }

    private static void sortByAge(File[] entries) {
        Arrays.sort(entries, new Comparator<File>() {
            @Override
            public int compare(File left, File right) {
                int order = Long.compare(left.lastModified(), right.lastModified());
                return order != 0 ? order : left.compareTo(right);
            }
        });
    }

    private static long size(File[] entries) throws IOException {
        long total = 0;
        for (File entry : entries) {
            total += Disk.size(entry);
        }
        return total;
    }

    private static boolean isOwn(String name) {
        return name.equals(METADATA) || name.equals(EXTRA) || name.equals(INDEX);
    }
}
