package com.lumora.camera.effect.qv.modelcache;

import java.io.File;
import java.io.IOException;
import java.io.InterruptedIOException;
import java.util.concurrent.Callable;
import java.util.concurrent.ConcurrentHashMap;
import java.util.concurrent.ExecutionException;
import java.util.concurrent.FutureTask;

/** The entries of a store that are being fetched, each by one thread. */
final class Flights {
    private final FileStore mStore;
    private final ConcurrentHashMap<String, Flight> mFlights = new ConcurrentHashMap<>();

    Flights(FileStore store) {
        mStore = store;
    }

    File fetch(final String key, final Fetcher fetcher) throws IOException {
        Flight flight = new Flight(new Callable<File>() {
            @Override
            public File call() throws IOException {
                return fetchNow(key, fetcher);
            }
        });
        Flight other = mFlights.putIfAbsent(key, flight);
        if (other != null) {
            return other.result();
        }
        try {
            flight.run();
        } finally {
            mFlights.remove(key);
        }
        return flight.result();
    }

    private File fetchNow(String key, Fetcher fetcher) throws IOException {
        File landed = mStore.get(key); // before this flight took off
        if (landed != null) {
            return landed;
        }
        try (EntryWriter out = mStore.write(key)) {
            fetcher.fetch(key, out);
            out.commit();
        }
        return mStore.entries().file(Entries.nameOf(key));
    }

    /** The fetching of one entry. */
    private static final class Flight extends FutureTask<File> {
        private final Thread mThread = Thread.currentThread();

        Flight(Callable<File> fetching) {
            super(fetching);
        }

        File result() throws IOException {
            if (mThread == Thread.currentThread() && !isDone()) {
                throw new IllegalStateException("a fetcher asks for the entry that it fetches");
            }
            try {
                return get();
            } catch (InterruptedException interruption) {
                Thread.currentThread().interrupt();
                throw new InterruptedIOException("interrupted while another thread fetches");
            } catch (ExecutionException failure) {
                if (failure.getCause() instanceof IOException) {
                    throw new IOException(failure.getCause().getMessage(), failure.getCause());
                }
                throw new IllegalStateException("the fetcher failed", failure.getCause());
            }
        }
    }
}
