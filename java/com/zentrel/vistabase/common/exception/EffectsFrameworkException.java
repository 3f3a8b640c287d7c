package com.zentrel.vistabase.common.exception;

import org.jetbrains.annotations.NotNull;

/** A model cache could not do what it was asked. */
public class EffectsFrameworkException extends RuntimeException {
    private static final long serialVersionUID = 1L;

    /**
     * Made by native code.
     *
     * @param message what failed, and why
     */
    public EffectsFrameworkException(@NotNull String message) {
        super(message);
    }
}
