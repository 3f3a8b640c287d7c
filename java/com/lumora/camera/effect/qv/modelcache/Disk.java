package com.lumora.camera.effect.qv.modelcache;

import java.io.File;
import java.io.FileOutputStream;
import java.io.IOException;

/**
 * What the stores do to the disk, each step of which either lasts or throws. Not final: tests stand
 * in for disks that fail, and for power cuts.
 */
class Disk {
    /** Opens a file for writing, at its end or from its beginning. */
    FileOutputStream open(File file, boolean append) throws IOException {
        return new FileOutputStream(file, append);
    }

    /** Returns once the file's bytes would outlast a power cut. */
    void sync(FileOutputStream out) throws IOException {
        out.getFD().sync();
    }

    /** Returns once the names in the folder would outlast a power cut. */
    void syncFolder(File folder) throws IOException {
        FolderSync.sync(folder);
    }

    /** Gives a file a name of the same folder, in place of whatever has it. */
    void rename(File from, File to) throws IOException {
        if (to.isDirectory() || from.isDirectory()) { // which the system does not replace
            delete(to);
        }
        if (!from.renameTo(to)) {
            throw new IOException("cannot rename " + from + " to " + to.getName());
        }
    }

    /** Deletes a file, or a folder with all that is in it; of a link, the link. */
    void delete(File file) throws IOException {
        if (file.delete()) {
            return;
        }
        File[] inside = isFolder(file) ? file.listFiles() : null;
        if (inside != null) {
            for (File each : inside) {
                delete(each);
            }
        }
        if (!file.delete() && file.exists()) {
            throw new IOException("cannot delete " + file);
        }
    }

    /** Creates the folder and its parents. */
    final void createFolder(File folder) throws IOException {
        if (folder.isDirectory()) {
            return;
        }
        File parent = folder.getAbsoluteFile().getParentFile();
        createFolder(parent);
        if (!folder.mkdir() && !folder.isDirectory()) {
            throw new IOException("cannot create the folder " + folder);
        }
        syncFolder(parent);
    }

    /** Has {@code content} take the place of the file's, at once and for good, by way of a part. */
    final void replace(File file, byte[] content, File part) throws IOException {
        prepare(part, content);
        rename(part, file);
        syncFolder(file.getParentFile());
    }

    /** Writes a part that is to take the place of a file. */
    final void prepare(File part, byte[] content) throws IOException {
        if (part.isDirectory()) {
            delete(part);
        }
        try (FileOutputStream out = open(part, false)) {
            out.write(content);
            sync(out);
        } catch (IOException failure) {
            part.delete(); // It may hold the room that is missing.
            throw named(part, failure);
        }
    }

    /** A failure that says of which file it is, as the system's do not. */
    static IOException named(File file, IOException failure) {
        return new IOException(file + ": " + failure.getMessage(), failure);
    }

    /** Bytes of a file, or of all files below a folder. */
    static long size(File file) throws IOException {
        File[] inside = isFolder(file) ? file.listFiles() : null;
        if (inside == null) {
            return file.isFile() ? file.length() : 0;
        }
        long total = 0;
        for (File each : inside) {
            total += size(each);
        }
        return total;
    }

    /** Whether it is a folder, and not a link to one. */
    private static boolean isFolder(File file) throws IOException {
        if (!file.isDirectory()) {
            return false;
        }
        File here = new File(file.getAbsoluteFile().getParentFile().getCanonicalFile(), file.getName());
        return here.equals(file.getCanonicalFile());
    }
}
