package com.lumora.camera.effect.qv.modelcache;

import java.io.*;
import java.nio.file.Files;
import java.util.*;

/**
 * A disk that ends the life of whoever uses it at its n-th step, or fails from there on. It knows
 * what a power cut would leave: files as they were synced, under the names of synced folders.
 */
final class StandInDisk extends HookedDisk {
    /** The process is dead: nothing happens any more. */
    static final class Death extends Error {
        private static final long serialVersionUID = 1L;
    }

    private static final byte[] GARBAGE = {0, 0, 0};

    private final boolean mFails;
    private int mLeft;
    private final Map<FileOutputStream, File> mOpen = new HashMap<>();
    private final Map<File, byte[]> mSynced = new HashMap<>();
    private final Map<File, Map<String, byte[]>> mFolders = new HashMap<>();
    private File mRenamedLast;
    private File mRenamedFrom;

    /** @param fails throws IOException from that step on, instead of dying */
    StandInDisk(int steps, boolean fails) {
        mLeft = steps;
        mFails = fails;
        hook = (step, file) -> step();
    }

    boolean hasStruck() {
        return mLeft <= 0;
    }

    /** Trusts what lies in a folder to have been synced long ago. */
    void trust(File folder) throws IOException {
        for (File file : folder.listFiles()) {
            if (file.isDirectory()) {
                trust(file);
            } else {
                mSynced.put(file, Files.readAllBytes(file.toPath()));
            }
        }
        snapshot(folder);
    }

    /** How much of the changes of names since the last sync has reached the disk. */
    enum Names { NONE, LAST, ALL }

    /** Has a root look as after a power cut. */
    void cutPower(File root, Names names) throws IOException {
        for (File folder : new File[] {new File(root, "extra"), root}) {
            if (names == Names.ALL && folder.isDirectory()) {
                snapshot(folder);
            }
            Map<String, byte[]> left = mFolders.getOrDefault(folder, new HashMap<>());
            if (names == Names.LAST && mRenamedLast != null) { // A file never has both names.
                if (mRenamedLast.getParentFile().equals(folder)) {
                    left.put(mRenamedLast.getName(), mSynced.getOrDefault(mRenamedLast, GARBAGE));
                }
                if (mRenamedFrom.getParentFile().equals(folder)) {
                    left.remove(mRenamedFrom.getName());
                }
            }
            for (File file : folder.isDirectory() ? folder.listFiles() : new File[0]) {
                if (file.isFile()) {
                    Files.delete(file.toPath());
                }
            }
            for (Map.Entry<String, byte[]> file : left.entrySet()) {
                Files.createDirectories(folder.toPath());
                Files.write(new File(folder, file.getKey()).toPath(), file.getValue());
            }
        }
    }

    /** Time goes by in which the disk may strike. */
    void pass() throws IOException {
        hook.at("pass", null);
    }

    private void snapshot(File folder) {
        Map<String, byte[]> files = new HashMap<>();
        for (File file : folder.listFiles()) {
            if (file.isFile()) {
                files.put(file.getName(), mSynced.getOrDefault(file, GARBAGE));
            }
        }
        mFolders.put(folder, files);
    }

    private void step() throws IOException {
        if (--mLeft <= 0) {
            if (mFails) {
                throw new IOException("stand-in failure");
            }
            throw new Death();
        }
    }

    @Override
    FileOutputStream open(File file, boolean append) throws IOException {
        FileOutputStream out = super.open(file, append);
        mSynced.remove(file);
        mOpen.put(out, file);
        return out;
    }

    @Override
    void sync(FileOutputStream out) throws IOException {
        super.sync(out);
        mSynced.put(mOpen.get(out), Files.readAllBytes(mOpen.get(out).toPath()));
    }

    @Override
    void syncFolder(File folder) throws IOException {
        super.syncFolder(folder);
        snapshot(folder);
    }

    @Override
    void rename(File from, File to) throws IOException {
        super.rename(from, to);
        mRenamedLast = to;
        mRenamedFrom = from;
        byte[] synced = mSynced.remove(from);
        mSynced.remove(to);
        if (synced != null) {
            mSynced.put(to, synced);
        }
    }
}
