package com.zentrel.jni;

import org.jetbrains.annotations.NotNull;

/**
 * Base of the classes whose work is done by a native peer. The peer lives until the object is
 * released or, failing that, until some time after the object has become unreachable.
 *
 * <p>One thread at a time, except for {@link #release}.
 */
public abstract class HybridClassBase implements AutoCloseable {
    /** Owner of the native peer; null once released. Read by native code. */
    private HybridData mHybridData;

    /** @param hybridData what {@code initHybrid} returned */
    protected HybridClassBase(@NotNull HybridData hybridData) {
        mHybridData = hybridData;
    }

    /**
     * Destroys the native peer now, or when the calls inside it have returned; native methods throw
     * NullPointerException from then on. Any thread may call it, at any time; again, it does nothing.
     */
    public final void release() {
        HybridData hybridData = mHybridData;
        mHybridData = null;
        if (hybridData != null) {
            hybridData.release();
        }
    }

    /** Same as {@link #release}, for try-with-resources. */
    @Override
    public final void close() {
        release();
    }
}
