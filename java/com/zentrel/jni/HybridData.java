package com.zentrel.jni;

import java.lang.ref.PhantomReference;
import java.lang.ref.ReferenceQueue;
import java.util.Collections;
import java.util.Set;
import java.util.concurrent.ConcurrentHashMap;

/**
 * Owns the native peer of a managed object. The peer is destroyed by {@link #release}, or some time
 * after this object has become unreachable.
 */
public final class HybridData {
    private final Destructor mDestructor = new Destructor(this);

    /** Called by native code, which then hands the peer to the destructor. */
    public HybridData() {}

    /** Destroys the native peer now. Calling it again does nothing. */
    public void release() {
        mDestructor.destruct();
    }

    /**
     * Holds the only pointer to the native peer. A phantom reference and a thread instead of a
     * finalizer (deprecated, slow) or a cleaner (missing on older systems).
     */
    private static final class Destructor extends PhantomReference<HybridData> {
        private static final ReferenceQueue<HybridData> UNREACHABLE = new ReferenceQueue<>();

        /** Keeps the destructors themselves reachable until they have run. */
        private static final Set<Destructor> PENDING =
                Collections.newSetFromMap(new ConcurrentHashMap<Destructor, Boolean>());

        private static boolean sThreadStarted;

        /** Read and written by native code too. */
        private long mNativePointer;

        Destructor(HybridData referent) {
            super(referent, UNREACHABLE);
            PENDING.add(this);
            startThread();
        }

        /** With the first peer only: stores have none. */
        private static synchronized void startThread() {
            if (!sThreadStarted) {
                DestructorThread thread = new DestructorThread();
                thread.setDaemon(true);
                thread.start();
                sThreadStarted = true;
            }
        }

        /**
         * Synchronized because the collector may find a HybridData unreachable while its release is
         * still running.
         */
        synchronized void destruct() {
            PENDING.remove(this);
            clear();
            long pointer = mNativePointer;
            mNativePointer = 0;
            if (pointer != 0) {
                deleteNative(pointer);
            }
        }

        private static native void deleteNative(long pointer);
    }

    /** A named class: a method reference would be slower at startup than everything else here. */
    private static final class DestructorThread extends Thread {
        DestructorThread() {
            super("HybridData destructor");
        }

        @Override
        public void run() {
            while (true) {
                try {
                    ((Destructor) Destructor.UNREACHABLE.remove()).destruct();
                } catch (InterruptedException interruption) {
                    // Nobody has a reason to end this thread.
                }
            }
        }
    }
}
