package com.zentrel.vistabase.common.exception;

/** A model cache could not do what was asked. */
public class EffectsFrameworkException extends RuntimeException {
    private static final long serialVersionUID = 1L;

    /**
     * Made by native code.
     *
     * @param message what failed, and why
     */
    public EffectsFrameworkException(String message) {
        super(message);
    }
}
