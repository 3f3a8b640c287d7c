package com.lumora.camera.effect.qv.modelcache;

import java.util.ArrayList;
import java.util.List;
import java.util.Locale;
import org.jetbrains.annotations.NotNull;
import org.jetbrains.annotations.Nullable;

/** Describes a model file by its type, size and digest. Immutable; compares by value. */
public final class ModelFile {
    private static final int DIGEST_LENGTH = 64;

    private final String mType;
    private final long mSizeBytes;
    private final String mSha256;

    /**
     * A file with these properties.
     *
     * @param type one of {@link Capability#types}
     * @param sizeBytes the size of the file
     * @param sha256 the SHA-256 digest of the file's bytes, 64 hexadecimal digits
     * @throws IllegalArgumentException if the size is negative or the digest malformed
     */
    public ModelFile(@NotNull String type, long sizeBytes, @NotNull String sha256) {
        if (type == null || sha256 == null) {
            throw new IllegalArgumentException("a model file needs a type and a digest");
        }
        if (sizeBytes < 0) {
            throw new IllegalArgumentException("negative size of " + type + ": " + sizeBytes);
        }
        if (!isDigest(sha256)) {
            throw new IllegalArgumentException("not 64 hexadecimal digits: " + sha256);
        }
        mType = type;
        mSizeBytes = sizeBytes;
        mSha256 = sha256.toLowerCase(Locale.ROOT);
    }

    /** From what native code returns: types, sizes and digests. */
    static List<ModelFile> listOf(Object[] parts) {
        String[] types = (String[]) parts[0];
        List<ModelFile> files = new ArrayList<>();
        for (int i = 0; i < types.length; ++i) {
            files.add(new ModelFile(types[i], ((long[]) parts[1])[i], ((String[]) parts[2])[i]));
        }
        return files;
    }

    /** {@return one of {@link Capability#types}} */
    public @NotNull String type() {
        return mType;
    }

    /** {@return the size of the file} */
    public long sizeBytes() {
        return mSizeBytes;
    }

    /** {@return the digest, in lower case} */
    public @NotNull String sha256() {
        return mSha256;
    }

    @Override
    public boolean equals(@Nullable Object other) {
        return other instanceof ModelFile && mType.equals(((ModelFile) other).mType)
                && mSizeBytes == ((ModelFile) other).mSizeBytes
                && mSha256.equals(((ModelFile) other).mSha256);
    }

    @Override
    public int hashCode() {
        return mSha256.hashCode() + mType.hashCode();
    }

    @Override
    public @NotNull String toString() {
        return mType + ", " + mSizeBytes + " bytes, " + mSha256;
    }

    private static boolean isDigest(String text) {
        for (int i = 0; i < text.length(); ++i) {
            // Not Character.digit, which knows the digits of other scripts too.
            char c = text.charAt(i);
            if ((c < '0' || c > '9') && (c < 'a' || c > 'f') && (c < 'A' || c > 'F')) {
                return false;
            }
        }
        return text.length() == DIGEST_LENGTH;
    }
}
