package com.lumora.camera.effect.qv.modelcache;

import java.io.File;
import java.io.IOException;
import java.io.InterruptedIOException;
import java.util.HashMap;
import java.util.Map;
import java.util.concurrent.Callable;
import java.util.concurrent.ConcurrentHashMap;
import java.util.concurrent.ExecutionException;
import java.util.concurrent.FutureTask;
import java.util.concurrent.TimeUnit;
import java.util.concurrent.TimeoutException;

/** Of several threads that want the same thing, lets one fetch it while the others wait. */
final class SingleFlight {
    private static final long POLL_MILLIS = 100;

    private final ConcurrentHashMap<String, Flight> mFlights = new ConcurrentHashMap<>();

    /** What threads wait for. */
    private final Map<Thread, Flight> mWaiting = new HashMap<>();

    File run(String key, Callable<File> fetching) throws IOException {
        while (true) {
            Flight flight = new Flight(fetching);
            Flight other = null;
            try {
                other = mFlights.putIfAbsent(key, flight);
                if (other == null) {
                    flight.run();
                }
            } finally {
                flight.mThread = null; // first: it works even when the stack has overflowed
                mFlights.remove(key, flight);
            }
            if (other == null) {
                return resultOf(flight);
            }
            File fetched = waitFor(other);
            if (fetched != null) {
                return fetched;
            }
            mFlights.remove(key, other);
        }
    }

    private static File resultOf(Flight flight) throws IOException {
        try {
            return flight.get();
        } catch (InterruptedException impossible) { // It is done.
            throw new IllegalStateException(impossible);
        } catch (ExecutionException failure) {
            throw SingleFlight.<RuntimeException>asItIs(failure.getCause());
        }
    }

    /** Throws it, whatever it is: the unchecked cast satisfies the compiler. */
    @SuppressWarnings("unchecked")
    private static <T extends Throwable> T asItIs(Throwable failure) throws T {
        throw (T) failure;
    }

    /** Null if its thread has left it undone, as after a stack overflow. */
    private File waitFor(Flight other) throws IOException {
        Thread thread = Thread.currentThread();
        try {
            synchronized (mWaiting) {
                for (Flight flight = other; flight != null; flight = mWaiting.get(flight.mThread)) {
                    if (flight.mThread == thread && !flight.isDone()) {
                        throw new IllegalStateException(
                                "fetchers wait for each other: one asks for what the other fetches");
                    }
                }
                mWaiting.put(thread, other);
            }
            while (other.mThread != null || other.isDone()) {
                try {
                    return other.get(POLL_MILLIS, TimeUnit.MILLISECONDS);
                } catch (TimeoutException stillFetching) {
                    // Looks again whether anyone still fetches.
                }
            }
            return null;
        } catch (InterruptedException interruption) {
            thread.interrupt();
            throw new InterruptedIOException("interrupted while another thread fetches");
        } catch (ExecutionException failure) {
            Throwable cause = failure.getCause();
            if (cause instanceof IOException) {
                throw new IOException(cause.getMessage(), cause);
            }
            throw new IllegalStateException("the fetcher failed: " + cause, cause);
        } finally {
            synchronized (mWaiting) {
                mWaiting.remove(thread);
            }
        }
    }

    /** The fetching of one entry. */
    private static final class Flight extends FutureTask<File> {
        /** Null once it has left the flight. */
        private volatile Thread mThread = Thread.currentThread();

        Flight(Callable<File> fetching) {
            super(fetching);
        }
    }
}
