package com.lumora.camera.effect.qv.modelcache;

import org.jetbrains.annotations.NotNull;
import org.jetbrains.annotations.Nullable;

/**
 * Tells an app about the failures that the library survives, in addition to the platform's log: on
 * the thread that caused them, and from the first use of any of the library's classes on.
 */
public final class SoftErrors {
    /** Receives soft errors. May be called on several threads at once. */
    public interface Listener {
        /**
         * One soft error. What this throws is dropped; soft errors that it causes itself reach the
         * platform's log only. May run in the middle of a call, which waits for it: be quick.
         *
         * @param file the source file that reports it
         * @param function which function reports
         * @param line the line in the file; 0 if it is not known
         * @param severity 1: an operation failed and gave a neutral result, or something was
         *     repaired; 2: a promise of the code itself was broken
         * @param category the part of the library: a tag for a log
         * @param message what happened
         */
        void onSoftError(
                @NotNull String file, @NotNull String function, int line, int severity,
                @NotNull String category, @NotNull String message);
    }

    /** Whether the current thread is in the listener. */
    private static final ThreadLocal<Boolean> IN_LISTENER = new ThreadLocal<>();

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
        Listener listener = sListener;
        if (listener == null || IN_LISTENER.get() != null) {
            return;
        }
        IN_LISTENER.set(true);
        try {
            listener.onSoftError(file, function, line, severity, category, message);
        } catch (Throwable thrown) {
            // There is nobody to tell, and the failure being reported is handled elsewhere.
        } finally {
            IN_LISTENER.remove();
        }
    }
}
