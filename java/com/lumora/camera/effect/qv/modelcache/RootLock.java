package com.lumora.camera.effect.qv.modelcache;

import java.io.Closeable;
import java.io.File;
import java.io.IOException;
import java.io.RandomAccessFile;
import java.nio.channels.FileLock;
import java.util.ArrayList;
import java.util.List;
import java.util.Properties;

/**
 * Sees to it that a root has one store, in this process and in all others. The lock is on the file
 * {@code .lock} in the root; the system drops it with the process.
 */
final class RootLock implements Closeable {
    /**
     * The roots of this process, with the names of the threads that opened them. Shared by all class
     * loaders: the system drops a process's lock with any descriptor of the file that is closed, so
     * that nobody else in the process may open it.
     */
    private static final Properties OPEN = System.getProperties();

    /** Files of locks that others of this process have; never closed. */
    private static final List<RandomAccessFile> NOT_OURS = new ArrayList<>();

    private final File mRoot;
    private final String mClaim;
    private RandomAccessFile mFile;
    private IOException mWhyNotForWriting;
    private boolean mClosed;

    /** @throws IOException that says who else has the root */
    RootLock(File root) throws IOException {
        mRoot = root.getCanonicalFile();
        mClaim = "modelcache.open:" + mRoot;
        synchronized (OPEN) {
            String opener = OPEN.getProperty(mClaim);
            if (opener != null) {
                throw new IOException(root + " has a store in this process already, opened by the"
                        + " thread \"" + opener + "\"");
            }
            OPEN.setProperty(mClaim, Thread.currentThread().getName());
        }
        boolean locked = false;
        try {
            lock();
            locked = true;
        } finally {
            if (!locked) {
                close();
            }
        }
    }

    /**
     * To be called before anything is changed: on a read-only disk, a root can be opened unlocked.
     *
     * @return whether it has been locked only now, so that others may have changed what is in it
     */
    boolean lockForWriting() throws IOException {
        if (mWhyNotForWriting == null) {
            return false;
        }
        closeFile();
        lock();
        if (mWhyNotForWriting != null) {
            throw new IOException(mRoot + " cannot be written to", mWhyNotForWriting);
        }
        return true;
    }

    boolean isForWriting() {
        return mWhyNotForWriting == null;
    }

    private void lock() throws IOException {
        File file = new File(mRoot, ".lock");
        if (file.isDirectory()) { // Not removed, since another process may be locking it.
            file = new File(file, ".lock");
        }
        IOException readOnly = null;
        try {
            mFile = new RandomAccessFile(file, "rw");
        } catch (IOException failure) {
            readOnly = failure;
            if (file.exists()) {
                mFile = new RandomAccessFile(file, "r");
            }
        }
        if (mFile != null && !tryLock(readOnly != null)) {
            throw new IOException(mRoot + " has a store in " + holder());
        }
        mWhyNotForWriting = readOnly; // only now, since what is above may have thrown
        if (readOnly == null) {
            nameHolder();
        }
    }

    private boolean tryLock(boolean shared) throws IOException {
        try {
            FileLock lock = mFile.getChannel().tryLock(0, Long.MAX_VALUE, shared);
            return lock != null;
        } catch (RuntimeException overlapping) { // by another path to the root: a mount, say
            NOT_OURS.add(mFile);
            mFile = null;
            throw new IOException(mRoot + " has a store in this process already", overlapping);
        }
    }

    /** The number of the process, for whoever finds the root locked. */
    private void nameHolder() {
        try {
            String process = new File("/proc/self").getCanonicalFile().getName();
            mFile.write((process + "\n").getBytes("US-ASCII"));
            mFile.setLength(mFile.getFilePointer());
        } catch (IOException full) {
            // The lock is what matters.
        }
    }

    private String holder() {
        try {
            String process = mFile.readLine();
            try (RandomAccessFile command = new RandomAccessFile("/proc/" + process + "/cmdline", "r")) {
                String line = command.readLine(); // null of a process that is ending
                return "the process " + process
                        + (line == null ? "" : " (" + line.split("\0")[0] + ")");
            }
        } catch (IOException unknown) {
            return "another process";
        }
    }

    private void closeFile() {
        try {
            if (mFile != null) {
                mFile.close();
            }
        } catch (IOException failure) {
            // Nothing has been written that could be lost.
        }
        mFile = null;
    }

    /** Calling it again does nothing. */
    @Override
    public void close() {
        synchronized (OPEN) {
            if (!mClosed) {
                mClosed = true;
                closeFile();
                OPEN.remove(mClaim);
            }
        }
    }
}
