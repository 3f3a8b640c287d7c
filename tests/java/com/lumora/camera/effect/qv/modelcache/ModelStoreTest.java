package com.lumora.camera.effect.qv.modelcache;

import static com.lumora.camera.effect.qv.modelcache.Samples.*;
import static com.lumora.camera.effect.qv.modelcache.StoreException.Reason.*;
import static java.util.Arrays.asList;
import static org.junit.jupiter.api.Assertions.*;

import com.zentrel.vistabase.assets.modelcache.facetracker.FacetrackerModelCache;
import java.io.*;
import java.nio.file.Files;
import java.util.*;
import java.util.concurrent.CancellationException;
import org.junit.jupiter.api.*;
import org.junit.jupiter.api.function.Executable;
import org.junit.jupiter.api.io.TempDir;

/** What Java adds to a ModelStore. What a store does is tested natively. */
class ModelStoreTest {
    private static final ModelFile FIRST = files(1).get(0);
    private static final byte[] FIRST_BYTES = bytes(FIRST.type(), 1);

    @TempDir File mRoot;
    private ModelStore mStore;

    @BeforeEach
    void open() throws IOException {
        mStore = Samples.open(mRoot);
    }

    @AfterEach
    void close() {
        mStore.close();
    }

    @Test
    void pathsFollowTheActiveVersion() throws IOException {
        assertActive(null, mStore);
        update(mStore, 1);
        update(mStore, 2);
        assertActive(2, mStore);
        mStore.activate(1);
        assertActive(1, mStore);
        close();
        open();
        assertActive(1, mStore);
        assertEquals(asList(1, 2), mStore.versions());
        assertEquals(TWO_VERSIONS, mStore.sizeBytes());
        mStore.deactivate();
        assertActive(null, mStore);
        mStore.trimExcept(2);
        assertEquals(asList(2), mStore.versions());
    }

    @Test
    void filesOfAVersionAreThoseOfPathsAndOfTheRawClasses() throws IOException {
        update(mStore, 1);
        Map<ModelFile, String> files = mStore.files(1);
        assertEquals(files(1), new ArrayList<>(files.keySet()));
        assertEquals(new ArrayList<>(mStore.paths().values()), new ArrayList<>(files.values()));
        close();
        try (FileCacheBasicImpl raw = new FileCacheBasicImpl(mRoot.getPath(), 1L << 40);
                FacetrackerModelCache models = new FacetrackerModelCache(raw)) {
            assertEquals(files.get(FIRST), models.getFaceAlignPath(1));
            assertTrue(raw.getSize() >= VERSION_SIZE);
        }
        open();
        assertActive(1, mStore);
    }

    @Test
    void aWriterCountsAndKeepsSingleBytesToo() throws IOException {
        try (Update update = mStore.begin(1, files(1)); ModelWriter out = update.write(FIRST)) {
            out.write(FIRST_BYTES, 0, 400);
            out.restart();
            out.write(FIRST_BYTES[0]);
            out.write(FIRST_BYTES, 1, 399);
            out.write(FIRST_BYTES[400]);
            assertEquals(401, out.offset());
        }
        try (Update update = mStore.begin(1, files(1)); ModelWriter out = update.write(FIRST)) {
            assertEquals(VERSION_SIZE, update.totalBytes());
            assertEquals(VERSION_SIZE - 401, update.remainingBytes());
            for (int i = (int) out.offset(); i < SIZE; ++i) {
                out.write(FIRST_BYTES[i]);
            }
            out.commit();
            assertEquals(files(1).subList(1, 4), update.missing());
        }
    }

    @Test
    void failuresHaveReasons() throws IOException {
        Update update = mStore.begin(1, files(1));
        assertFails(WRONG_CONTENT, () -> update.write(FIRST).write(new byte[SIZE + 1]));
        ModelWriter failed = update.write(FIRST);
        assertFails(TOO_SHORT, failed::commit);
        assertFails(IO, () -> failed.write(1));
        update.close();

        update(mStore, 1);
        StoreException inUse = assertFails(IN_USE, () -> Samples.open(mRoot));
        assertEquals(mRoot.getPath(), inUse.path());
        mStore.setMaxSizeBytes(TWO_VERSIONS - 1);
        StoreException noRoom = assertFails(NO_ROOM, () -> mStore.begin(2, files(2)));
        assertEquals(TWO_VERSIONS, noRoom.neededBytes());
        assertEquals(TWO_VERSIONS - 1, noRoom.budgetBytes());
        assertTrue(new File(mStore.paths().get(FIRST.type())).delete());
        assertEquals(asList(FIRST), mStore.verify());
        assertFails(DAMAGED, () -> mStore.activate(1));

        File tooLong = new File(mRoot, String.join("", Collections.nCopies(256, "x")));
        StoreException io = assertFails(IO, () -> Samples.open(tooLong));
        assertEquals(36, io.errno()); // ENAMETOOLONG
    }

    @Test
    void theActiveVersionGoesOnlyIfItIsGivenUp() throws IOException {
        update(mStore, 1);
        mStore.setMaxSizeBytes(VERSION_SIZE);
        assertFails(NO_ROOM, () -> mStore.begin(2, files(2), Room.KEEP_ACTIVE));
        mStore.begin(2, files(2), Room.GIVE_UP_ACTIVE).close();
        assertActive(null, mStore);
    }

    @Test
    void anInterruptedThreadWritesAndActivatesNothing() throws IOException {
        Update update = mStore.begin(1, files(1));
        ModelWriter out = update.write(FIRST);
        out.write(FIRST_BYTES, 0, 400);
        for (Executable call : new Executable[] {
            () -> out.write(1), () -> out.write(FIRST_BYTES), out::commit, update::activate}) {
            Thread.currentThread().interrupt();
            assertThrows(InterruptedIOException.class, call);
            assertTrue(Thread.interrupted(), "cleared");
        }
        assertEquals(400, out.offset());
        out.write(FIRST_BYTES, 400, SIZE - 400);
        out.commit();
    }

    @Test
    void aCancelledUpdateThrows() throws IOException {
        Update update = mStore.begin(1, files(1));
        ModelWriter out = update.write(FIRST);
        update.cancel();
        assertEachThrows(CancellationException.class,
                () -> out.write(FIRST_BYTES), out::commit, update::activate);
    }

    @Test
    void badArgumentsAreRefused() throws IOException {
        String digest = FIRST.sha256();
        assertEachThrows(IllegalArgumentException.class,
                () -> ModelStore.open(mRoot, null, 1), () -> ModelStore.open(mRoot, CAPABILITY, -1),
                () -> mStore.begin(1, null), () -> mStore.begin(1, asList((ModelFile) null)),
                () -> mStore.begin(1, files(1).subList(0, 3)),
                () -> mStore.begin(1, files(1), null), () -> mStore.begin(1, files(1)).write(null),
                () -> mStore.activate(9), () -> mStore.files(9), () -> mStore.setMaxSizeBytes(-1),
                () -> new ModelFile("t", 1, digest.substring(1) + "\u0661"),
                () -> new ModelFile("t", 1, null), () -> new ModelFile(null, 1, digest),
                () -> new ModelFile("t", -1, digest), () -> Capability.of("", "t"),
                () -> Capability.of("n"), () -> Capability.of("n", "t", null),
                () -> Capability.of("SEGMENTATION", "t"));
        assertEquals(FIRST, new ModelFile(FIRST.type(), SIZE, digest.toUpperCase(Locale.ROOT)));
    }

    /** Native code refuses a known name with types other than its own. */
    @Test
    void knownCapabilitiesHaveTheNativeTypes() {
        for (Capability known : asList(Capability.FACE_TRACKING, Capability.SEGMENTATION)) {
            String[] types = known.types().toArray(new String[0]);
            assertEquals(known, Capability.of(known.name(), types));
        }
    }

    @Test
    void aClosedStoreRefusesEverything() throws IOException {
        Update update = mStore.begin(2, files(2));
        assertThrows(IllegalStateException.class, () -> mStore.begin(3, files(3)));
        ModelWriter out = update.write(files(2).get(0));
        mStore.close();
        mStore.close();
        assertEachThrows(IllegalStateException.class,
                mStore::paths, mStore::versions, mStore::activeVersion, mStore::deactivate,
                () -> mStore.begin(2, files(2)), mStore::sizeBytes, () -> mStore.setMaxSizeBytes(1),
                update::missing, update::activate, () -> out.write(1), out::commit);
        update.close();
        out.close();
    }

    /** Opens a store twice where there is no native library. */
    public static void main(String[] root) throws IOException {
        for (int i = 0; i < 2; ++i) {
            try {
                Samples.open(new File(root[0]));
            } catch (UnsatisfiedLinkError missing) {
                System.out.println(missing.getMessage());
            }
        }
    }

    @Test
    void aMissingLibraryIsNamedEachTime() throws Exception {
        File output = new File(mRoot, "output");
        new ProcessBuilder(System.getProperty("java.home") + "/bin/java",
                "-Djava.library.path=" + mRoot, "-cp", System.getProperty("java.class.path"),
                ModelStoreTest.class.getName(), mRoot.getPath())
                .redirectErrorStream(true).redirectOutput(output).start().waitFor();
        String both = "(?=.*libmodelcache\\.so)(?=.*" + System.getProperty("os.arch") + ").*";
        assertLinesMatch(asList(both, both), Files.readAllLines(output.toPath()));
    }
}
