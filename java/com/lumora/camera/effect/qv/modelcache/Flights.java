package com.lumora.camera.effect.qv.modelcache;

import java.io.File;
import java.io.FilterOutputStream;
import java.io.IOException;
import java.io.InterruptedIOException;
import java.util.HashMap;
import java.util.Map;
import java.util.concurrent.Callable;
import java.util.concurrent.ConcurrentHashMap;
import java.util.concurrent.ExecutionException;
import java.util.concurrent.FutureTask;

/** The entries of a store that are being fetched, each by one thread. */
final class Flights {
    private final FileStore mStore;
    private final ConcurrentHashMap<String, Flight> mFlights = new ConcurrentHashMap<>();

    /** What threads wait for. */
    private final Map<Thread, Flight> mWaiting = new HashMap<>();

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
            return waitFor(other);
        }
        try {
            flight.run();
            return flight.result();
        } catch (IllegalStateException failure) {
            throwAsItIs(failure.getCause());
            throw failure;
        } finally {
            mFlights.remove(key);
        }
    }

    private static void throwAsItIs(Throwable failure) {
        if (failure instanceof Error) {
            throw (Error) failure;
        }
        if (failure instanceof RuntimeException) {
            throw (RuntimeException) failure;
        }
    }

    private File waitFor(Flight other) throws IOException {
        Thread thread = Thread.currentThread();
        synchronized (mWaiting) {
            for (Flight flight = other; flight != null; flight = mWaiting.get(flight.mThread)) {
                if (flight.mThread == thread && !flight.isDone()) {
                    throw new IllegalStateException(
                            "fetchers wait for each other: one asks for what the other fetches");
                }
            }
            mWaiting.put(thread, other);
        }
        try {
            return other.result();
        } finally {
            synchronized (mWaiting) {
                mWaiting.remove(thread);
            }
        }
    }

    private File fetchNow(String key, Fetcher fetcher) throws IOException {
        File landed = mStore.get(key); // before this flight took off
        if (landed != null) {
            return landed;
        }
        try (final EntryWriter out = mStore.write(key)) {
            fetcher.fetch(key, new FilterOutputStream(out) {
                @Override
                public void write(byte[] bytes, int offset, int length) throws IOException {
                    out.write(bytes, offset, length);
                }

                @Override
                public void close() {} // That it is complete is said by the fetcher's return.
            });
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
            try {
                return get();
            } catch (InterruptedException interruption) {
                Thread.currentThread().interrupt();
                throw new InterruptedIOException("interrupted while another thread fetches");
            } catch (ExecutionException failure) {
                if (failure.getCause() instanceof IOException) {
                    throw new IOException(failure.getCause().getMessage(), failure.getCause());
                }
                throw new IllegalStateException("the fetcher failed: " + failure.getCause(), failure.getCause());
            }
        }
    }
}
