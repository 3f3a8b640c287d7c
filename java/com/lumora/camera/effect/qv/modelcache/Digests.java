package com.lumora.camera.effect.qv.modelcache;

import java.io.File;
import java.io.FileInputStream;
import java.io.FileNotFoundException;
import java.io.IOException;
import java.math.BigInteger;
import java.security.MessageDigest;
import java.security.NoSuchAlgorithmException;

/** SHA-256 digests of files. */
final class Digests {
    private static final int BUFFER = 1 << 16;

    private Digests() {}

    static MessageDigest create() {
        try {
            return MessageDigest.getInstance("SHA-256");
        } catch (NoSuchAlgorithmException impossible) { // Every Java has it.
            throw new IllegalStateException(impossible);
        }
    }

    /** Adds all bytes of a file. */
    static void update(MessageDigest digest, File file) throws IOException {
        try (FileInputStream in = new FileInputStream(file)) {
            byte[] bytes = new byte[BUFFER];
            for (int count; (count = in.read(bytes)) >= 0;) {
                digest.update(bytes, 0, count);
            }
        }
    }

    /** The digest in hexadecimal digits, lower case. */
    static String toHex(MessageDigest digest) {
        return String.format("%064x", new BigInteger(1, digest.digest()));
    }

    /** Whether a file has the size and the digest. */
    static boolean matches(ModelFile expected, File file) throws IOException {
        if (!file.isFile() || file.length() != expected.sizeBytes()) {
            return false;
        }
        MessageDigest digest = create();
        try {
            update(digest, file);
        } catch (FileNotFoundException failure) {
            if (file.exists()) {
                throw failure;
            }
            return false; // It was deleted just now.
        }
        return toHex(digest).equals(expected.sha256());
    }
}
