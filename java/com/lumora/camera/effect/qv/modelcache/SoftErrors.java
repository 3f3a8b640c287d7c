package com.lumora.camera.effect.qv.modelcache;

import org.jetbrains.annotations.NotNull;
import org.jetbrains.annotations.Nullable;

/**
 * Tells an app of the failures that the library survives, its own and those of its native code:
 * beside the platform's log, on the thread that caused them, from the first use of any of the
 * library's classes on.
 */
public final class SoftErrors {
    /** Receives soft errors. May be called on several threads at once. */
    public interface Listener {
        /**
         * One soft error. What this throws is dropped; soft errors that it causes itself reach the
         * platform's log alone. May run in the middle of a store's call, under its lock: be quick, and
         * wait for no thread that uses the store.
         *
         * @param file where the code is that reports
         * @param function which function reports
         * @param line the line in the file; 0 for managed code
         * @param severity 1: an operation failed and gave a neutral result, or something was
         *     mended; 2: a promise of the code itself was broken
         * @param category the part of the library: a tag for a log
         * @param message what happened
         */
        void onSoftError(
                @NotNull String file, @NotNull String function, int line, int severity,
                @NotNull String category, @NotNull String message);
    }

    /** Keeps the first message of the current thread, from its making to its end. They nest. */
    static final class Capture {
        private final Capture mOuter;
        private String mFirst;

        private Capture(Capture outer) {
            mOuter = outer;
        }

        /** The first message since, or null if there was none. */
        String end() {
            CURRENT.get().capture = mOuter;
            return mFirst;
        }
    }

    /** What one thread has going on. */
    private static final class Current {
        Capture capture;
        boolean inListener;
    }

    private static final int RECOVERABLE = 1;

    private static final ThreadLocal<Current> CURRENT = new ThreadLocal<Current>() {
        @Override
        protected Current initialValue() {
            return new Current();
        }
    };

    private static volatile Listener sListener;

    private SoftErrors() {}

    /**
     * Sends all further soft errors to the listener.
     *
     * @param listener receives them on the threads that cause them; null for none
     */
    public static void setListener(@Nullable Listener listener) {
        sListener = listener;
    }

    /** Native code calls this for each of its soft errors. */
    private static void dispatch(String file, String function, int line, int severity,
            String category, String message) {
        Current current = CURRENT.get();
        if (current.capture != null && current.capture.mFirst == null) {
            current.capture.mFirst = message;
        }
        Listener listener = sListener;
        if (listener == null || current.inListener) {
            return;
        }
        current.inListener = true;
        try {
            listener.onSoftError(file, function, line, severity, category, message);
        } catch (Throwable thrown) {
            // There is nobody to tell: the failure that is being reported has its own way.
        } finally {
            current.inListener = false;
        }
    }

    /** Something that managed code has survived; goes to the log, too. */
    static void report(String function, String message) {
        try {
            Class.forName("android.util.Log").getMethod("w", String.class, String.class)
                    .invoke(null, "modelcache", message);
        } catch (ReflectiveOperationException desktop) {
            System.err.println("modelcache: " + message);
        }
        dispatch("com/lumora/camera/effect/qv/modelcache", function, 0, RECOVERABLE, "modelcache",
                message);
    }

    static Capture capture() {
        Current current = CURRENT.get();
        current.capture = new Capture(current.capture);
        return current.capture;
    }
}
