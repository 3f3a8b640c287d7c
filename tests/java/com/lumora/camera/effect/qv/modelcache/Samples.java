package com.lumora.camera.effect.qv.modelcache;

import static org.junit.jupiter.api.Assertions.*;

import java.io.File;
import java.io.IOException;
import java.math.BigInteger;
import java.nio.file.*;
import java.security.MessageDigest;
import java.util.*;
import org.junit.jupiter.api.function.Executable;

/** Versions to fill stores with. Of each, the first two files are its own. */
public final class Samples {
    static final Capability CAPABILITY = Capability.FACE_TRACKING;
    public static final int SIZE = 1000;
    static final long VERSION_SIZE = 4 * SIZE;
    /** What two versions have together. */
    static final long TWO_VERSIONS = 6 * SIZE;

    private Samples() {}

    public static byte[] bytes(String type, int version) {
        boolean isShared = CAPABILITY.types().indexOf(type) >= 2;
        byte[] bytes = new byte[SIZE];
        new Random(31L * type.hashCode() + (isShared ? 0 : version)).nextBytes(bytes);
        return bytes;
    }

    static ModelFile file(String type, byte[] bytes) {
        try {
            byte[] digest = MessageDigest.getInstance("SHA-256").digest(bytes);
            return new ModelFile(type, bytes.length,
                    String.format("%064x", new BigInteger(1, digest)));
        } catch (Exception impossible) {
            throw new AssertionError(impossible);
        }
    }

    public static List<ModelFile> files(int version) {
        List<ModelFile> files = new ArrayList<>();
        for (String type : CAPABILITY.types()) {
            files.add(file(type, bytes(type, version)));
        }
        return files;
    }

    static void update(ModelStore store, int version) throws IOException {
        try (Update update = store.begin(version, files(version))) {
            for (ModelFile file : update.missing()) {
                try (ModelWriter out = update.write(file)) {
                    int offset = (int) out.offset();
                    out.write(bytes(file.type(), version), offset, SIZE - offset);
                    out.commit();
                }
            }
            update.activate();
        }
    }

    static ModelStore open(File root) throws IOException {
        return ModelStore.open(root, CAPABILITY, 3 * VERSION_SIZE);
    }

    /** The version is active, its files are there, and no complete version has a wrong byte. */
    static void assertActive(Integer version, ModelStore store) throws IOException {
        assertEquals(version, store.activeVersion());
        assertEquals(version == null ? Collections.emptySet() : new HashSet<>(CAPABILITY.types()),
                store.paths().keySet());
        for (Map.Entry<String, String> path : store.paths().entrySet()) {
            assertArrayEquals(bytes(path.getKey(), version),
                    Files.readAllBytes(new File(path.getValue()).toPath()));
        }
        assertEquals(Collections.emptyList(), store.verify());
    }

    static StoreException assertFails(StoreException.Reason reason, Executable call) {
        StoreException failure = assertThrows(StoreException.class, call);
        assertEquals(reason, failure.reason(), failure.getMessage());
        return failure;
    }

    static void assertEachThrows(Class<? extends Throwable> type, Executable... calls) {
        for (Executable call : calls) {
            assertThrows(type, call);
        }
    }

    /** What soft errors say while this is open. */
    static final class Told implements AutoCloseable {
        final List<String> messages = Collections.synchronizedList(new ArrayList<>());

        Told() {
            SoftErrors.setListener((file, function, line, severity, category, message) ->
                    messages.add(message));
        }

        @Override
        public void close() {
            SoftErrors.setListener(null);
        }
    }
}
