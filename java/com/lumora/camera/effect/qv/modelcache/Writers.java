package com.lumora.camera.effect.qv.modelcache;

import java.io.IOException;
import java.util.HashMap;
import java.util.Map;
import java.util.Set;

/** The entries of a store that are being written, each by one writer. */
final class Writers {
    private final FileStore mStore;
    private final Map<String, EntryWriter> mWriters = new HashMap<>();

    Writers(FileStore store) {
        mStore = store;
    }

    /** Under the store's lock, before a writer is made. */
    void requireUnwritten(String name) {
        if (mWriters.containsKey(name)) {
            throw new IllegalStateException("is being written already: " + name);
        }
    }

    /** Under the store's lock. */
    void add(EntryWriter writer) {
        mWriters.put(writer.mName, writer);
    }

    /** Under the store's lock. */
    Set<String> names() {
        return mWriters.keySet();
    }

    void remove(EntryWriter writer) {
        mStore.lock();
        try {
            mWriters.remove(writer.mName);
        } finally {
            mStore.leave();
        }
    }

    /** Not under the store's lock, for which a writer may be waiting. */
    void closeAll() {
        EntryWriter[] writers;
        mStore.lock();
        try {
            writers = mWriters.values().toArray(new EntryWriter[0]);
        } finally {
            mStore.leave();
        }
        for (EntryWriter writer : writers) {
            try {
                writer.close();
            } catch (IOException failure) {
                SoftErrors.report("close", failure.toString());
            }
        }
    }
}
