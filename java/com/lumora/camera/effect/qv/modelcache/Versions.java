package com.lumora.camera.effect.qv.modelcache;

import java.io.File;
import java.io.IOException;
import java.util.ArrayList;
import java.util.Collection;
import java.util.Collections;
import java.util.HashSet;
import java.util.List;
import java.util.Set;

/** Changes the table of versions and what depends on it, under the lock of the file store. */
final class Versions {
    private final Capability mCapability;
    private final FileStore mFiles;
    private final Entries mEntries;
    private final long mBudget;
    private VersionTable mTable;

    /** Whether writing the table failed, so that another one may lie on disk. */
    private boolean mUncertain;

    Versions(Capability capability, FileStore files) throws IOException {
        mCapability = capability;
        mFiles = files;
        mEntries = files.entries();
        mBudget = files.maxSizeBytes();
        read();
    }

    /** Reads the table and mends what is not as it was left, as far as the disk lets it. */
    void read() throws IOException {
        File root = mFiles.root();
        VersionTable table = VersionTable.newest(root, mCapability);
        boolean mended = VersionTable.haveCopiesParted(root);
        if (mended) {
            report("a copy of the table of versions was lost or damaged");
        }
        mTable = table != null ? table : IndexedVersions.read(root, mCapability);
        if (table != null || !mTable.versions().isEmpty()) {
            mended |= mend(dropIncomplete());
        }
        if (mended) {
            try {
                write(mTable);
            } catch (IOException failure) { // It is mended next time, then.
                report(failure.toString());
            }
        }
    }

    private boolean dropIncomplete() {
        boolean dropped = false;
        for (Version version : mTable.versions()) {
            if (!version.isWhole(mFiles.root(), mCapability)) {
                report("version " + version.number()
                        + " has lost files, or types that this release does not know");
                mTable = mTable.without(Collections.singleton(version));
                dropped = true;
            }
        }
        return dropped;
    }

    private boolean mend(boolean dropped) {
        boolean asLeft = mTable.areRecordsAsLeft();
        if (!mFiles.isForWriting()) {
            return false;
        }
        if (!asLeft) {
            mFiles.natives().reload(); // The metadata may be damaged, or others have written it.
        }
        if (dropped || !mTable.isIndexAsLeft()) {
            mFiles.natives().index(mCapability, mTable, null);
            report("the index was not as it was left: written anew");
        }
        return dropped || !asLeft;
    }

    VersionTable table() {
        return mTable;
    }

    /** Adds a version, in place of an earlier one of its number, as the last one. */
    void put(Version version, boolean active) throws IOException {
        settle();
        Version earlier = mTable.find(version.number());
        VersionTable next = mTable.with(version, active);
        if (earlier == null) {
            mFiles.natives().index(mCapability, next, version);
        } else if (earlier != mTable.last() || !earlier.names().equals(version.names())) {
            mFiles.natives().index(mCapability, next, null);
        }
        write(next);
    }

    /** Deletes versions with their files, but for those that others share, or that are to stay. */
    void remove(Collection<Version> gone, Set<String> kept) throws IOException {
        settle();
        Set<String> names = namesOfOnly(gone, kept);
        mTable = mTable.without(gone);
        mEntries.drop(names); // first: it makes the room that the rest needs on a full disk
        mFiles.natives().index(mCapability, mTable, null);
        write(mTable);
    }

    /** Remembers which entries have wrong bytes. */
    void setDamaged(Set<String> names) {
        if (names.equals(mTable.damaged())) {
            return;
        }
        mTable = mTable.withDamaged(names);
        try {
            write(mTable);
        } catch (IOException failure) { // It is known for as long as the store is open, then.
            report(failure.toString());
        }
    }

    /**
     * Has {@code bytes} more fit the budget: the oldest inactive versions go, then entries of no
     * version, but none of those that are to stay.
     */
    void makeRoom(long bytes, Set<String> kept) throws IOException {
        long free = mBudget - mEntries.size();
        List<Version> gone = new ArrayList<>();
        for (Version version : mTable.versions()) {
            if (bytes > free + sizeOf(namesOfOnly(gone, kept)) && version != mTable.active()) {
                gone.add(version);
            }
        }
        if (!gone.isEmpty()) {
            remove(gone, kept);
        }
        Set<String> staying = new HashSet<>(kept);
        staying.addAll(mTable.names());
        mEntries.makeRoom(bytes, mBudget, staying);
    }

    private Set<String> namesOfOnly(Collection<Version> versions, Set<String> kept) {
        Set<String> names = new HashSet<>();
        for (Version version : versions) {
            names.addAll(version.names().values());
        }
        names.removeAll(mTable.without(versions).names());
        names.removeAll(kept);
        return names;
    }

    private long sizeOf(Set<String> names) throws IOException {
        long size = 0;
        for (String name : names) {
            size += Disk.size(mEntries.file(name));
        }
        return size;
    }

    /** Has the table that is in force on disk, before anything is deleted that another may need. */
    private void settle() throws IOException {
        if (mUncertain) {
            write(mTable);
        }
    }

    /** Once the first copy is there, the table is in force. */
    private void write(VersionTable table) throws IOException {
        if (!mFiles.isForWriting()) {
            throw new IOException("not locked for writing: " + mFiles.root());
        }
        VersionTable next = table.next(
                mFiles.areRecordsCurrent() ? Snapshot.recordsOf(mFiles.root()) : "outdated -");
        byte[] bytes = next.toBytes();
        boolean written = false;
        try {
            mEntries.prepareOwn(Snapshot.NAME, bytes);
            mUncertain = true;
            mEntries.replaceOwn(Snapshot.NAME);
            mUncertain = false;
            written = true;
        } finally {
            if (!written) {
                mFiles.natives().outdate();
            }
        }
        mTable = next;
        try {
            mEntries.replaceExtra(Snapshot.NAME, bytes);
        } catch (IOException failure) {
            report(failure.toString());
        }
    }

    private void report(String message) {
        SoftErrors.report("versions", mFiles.root() + ": " + message);
    }
}
