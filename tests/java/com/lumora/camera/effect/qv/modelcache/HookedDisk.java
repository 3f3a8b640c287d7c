package com.lumora.camera.effect.qv.modelcache;

import java.io.*;

/** A disk that asks a hook before each of its steps, but after opening a file. */
class HookedDisk extends Disk {
    interface Hook {
        /** @param step the name of the method, or "write" or "close" of an opened file */
        void at(String step, File file) throws IOException;
    }

    Hook hook = (step, file) -> { };

    @Override
    FileOutputStream open(File file, boolean append) throws IOException {
        FileOutputStream opened = new FileOutputStream(file, append) {
            @Override
            public void write(byte[] bytes, int offset, int length) throws IOException {
                super.write(bytes, offset, length / 2);
                hook.at("write", file);
                super.write(bytes, offset + length / 2, length - length / 2);
            }

            @Override
            public void close() throws IOException {
                hook.at("close", file);
                super.close();
            }
        };
        hook.at("opened", file);
        return opened;
    }

    @Override
    void sync(FileOutputStream out) throws IOException {
        hook.at("sync", null);
        super.sync(out);
    }

    @Override
    void syncFolder(File folder) throws IOException {
        hook.at("syncFolder", folder);
        super.syncFolder(folder);
    }

    @Override
    void rename(File from, File to) throws IOException {
        hook.at("rename", to);
        super.rename(from, to);
    }

    @Override
    void delete(File file) throws IOException {
        hook.at("delete", file);
        super.delete(file);
    }
}
