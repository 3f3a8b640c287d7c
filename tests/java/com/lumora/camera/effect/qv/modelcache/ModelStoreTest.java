package com.lumora.camera.effect.qv.modelcache;

import static com.lumora.camera.effect.qv.modelcache.Samples.*;
import static com.lumora.camera.effect.qv.modelcache.StoreException.Reason.*;
import static java.util.Arrays.asList;
import static org.junit.jupiter.api.Assertions.*;

import com.zentrel.vistabase.assets.modelcache.facetracker.FacetrackerModelCache;
import java.io.*;
import java.nio.file.*;
import java.util.*;
import java.util.concurrent.CancellationException;
import org.junit.jupiter.api.*;
import org.junit.jupiter.api.function.Executable;
import org.junit.jupiter.api.io.TempDir;

/** What Java sees of a ModelStore. What a store does is tested natively. */
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

    private void reopen(long budget) throws IOException {
        mStore.close();
        mStore = ModelStore.open(mRoot, CAPABILITY, budget);
    }

    /** Writes so many bytes of the first file of version 1, and closes the writer. */
    private static void writePart(Update update, int size) throws IOException {
        try (ModelWriter out = update.write(FIRST)) {
            out.write(FIRST_BYTES, 0, size);
        }
    }

    @Test
    void pathsFollowTheActiveVersion() throws IOException {
        assertActive(null, mStore);
        update(mStore, 1);
        update(mStore, 2);
        assertActive(2, mStore);
        mStore.activate(1);
        assertActive(1, mStore);
        reopen(TWO_VERSIONS);
        assertActive(1, mStore);
        assertEquals(asList(1, 2), mStore.versions());
        mStore.deactivate();
        assertActive(null, mStore);
        mStore.trimExcept(2);
        assertEquals(asList(2), mStore.versions());
    }

    @Test
    void filesHaveTheirTypesInOrderAndTheirPaths() throws IOException {
        update(mStore, 1);
        Map<ModelFile, String> files = mStore.files(1);
        assertEquals(files(1), new ArrayList<>(files.keySet()));
        assertEquals(new ArrayList<>(mStore.paths().values()), new ArrayList<>(files.values()));
        assertEquals(VERSION_SIZE, mStore.sizeBytes());
    }

    @Test
    void rawClassesFindTheSameFiles() throws IOException {
        update(mStore, 1);
        update(mStore, 2);
        Map<String, String> paths = mStore.paths();
        mStore.close();
        try (FileCacheBasicImpl files = new FileCacheBasicImpl(mRoot.getPath(), 1L << 40);
                FacetrackerModelCache models = new FacetrackerModelCache(files)) {
            assertEquals(paths.get(Capability.FACE_TRACKER), models.getFaceAlignPath(2));
            assertEquals(paths.get(Capability.PDM_MULTIRES), models.getMeshPath(1));
            assertTrue(files.getSize() >= TWO_VERSIONS);
        }
        mStore = Samples.open(mRoot);
        assertActive(2, mStore);
    }

    @Test
    void anUpdateResumesAndTellsHowMuchIsLeft() throws IOException {
        try (Update update = mStore.begin(1, files(1))) {
            writePart(update, 400);
        }
        reopen(VERSION_SIZE);
        try (Update update = mStore.begin(1, files(1))) {
            assertEquals(VERSION_SIZE, update.totalBytes());
            assertEquals(VERSION_SIZE - 400, update.remainingBytes());
            try (ModelWriter out = update.write(FIRST)) {
                assertEquals(400, out.offset());
                out.restart();
                assertEquals(0, out.offset());
                out.write(FIRST_BYTES[0]);
                out.write(FIRST_BYTES, 1, 599);
                assertEquals(600, out.offset());
                for (int i = 600; i < SIZE; ++i) {
                    out.write(FIRST_BYTES[i]);
                }
                out.commit();
            }
            assertEquals(files(1).subList(1, 4), update.missing());
        }
    }

    @Test
    void failuresHaveReasons() throws IOException {
        Update update = mStore.begin(1, files(1));
        assertFails(TOO_SHORT, () -> update.write(FIRST).commit());
        assertFails(WRONG_CONTENT, () -> update.write(FIRST).write(new byte[SIZE + 1]));
        assertFails(WRONG_CONTENT, () -> {
            ModelWriter out = update.write(FIRST);
            out.write(new byte[SIZE]);
            out.commit();
        });
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
        assertFails(DAMAGED, () -> mStore.activate(1));

        close();
        StoreException io = assertFails(IO,
                () -> Samples.open(new File(mRoot, String.join("", Collections.nCopies(256, "x")))));
        assertEquals(36, io.errno()); // ENAMETOOLONG
    }

    @Test
    void theActiveVersionGoesOnlyIfItIsGivenUp() throws IOException {
        update(mStore, 1);
        mStore.setMaxSizeBytes(VERSION_SIZE);
        assertFails(NO_ROOM, () -> mStore.begin(2, files(2), Room.KEEP_ACTIVE));
        mStore.begin(2, files(2), Room.GIVE_UP_ACTIVE).close();
        assertActive(null, mStore);
        update(mStore, 2);
        assertActive(2, mStore);
    }

    @Test
    void anInterruptedThreadWritesAndActivatesNothing() throws IOException {
        try (Update update = mStore.begin(1, files(1))) {
            writePart(update, 400);
            ModelWriter out = update.write(FIRST);
            for (Executable call : new Executable[] {() -> out.write(1),
                () -> out.write(FIRST_BYTES), out::commit, update::activate}) {
                Thread.currentThread().interrupt();
                assertThrows(InterruptedIOException.class, call);
                assertTrue(Thread.interrupted(), "cleared");
            }
            assertEquals(400, out.offset());
            out.write(FIRST_BYTES, 400, SIZE - 400);
            out.commit();
        }
    }

    @Test
    void aCancelledUpdateKeepsWhatWasWritten() throws IOException {
        try (Update update = mStore.begin(1, files(1))) {
            ModelWriter out = update.write(FIRST);
            out.write(FIRST_BYTES, 0, 400);
            update.cancel();
            assertThrows(CancellationException.class, () -> out.write(FIRST_BYTES, 400, 1));
            assertThrows(CancellationException.class, update::activate);
        }
        try (Update update = mStore.begin(1, files(1))) {
            assertEquals(VERSION_SIZE - 400, update.remainingBytes());
        }
    }

    @Test
    void damagedFilesAreFoundAndFetchedAgain() throws IOException {
        update(mStore, 1);
        Files.write(Paths.get(mStore.paths().get(FIRST.type())), new byte[SIZE]);
        assertEquals(asList(FIRST), mStore.verify());
        try (Update update = mStore.begin(1, files(1))) {
            assertEquals(asList(FIRST), update.missing());
        }
        update(mStore, 1);
        assertActive(1, mStore);
    }

    @Test
    void badArgumentsAreRefused() throws IOException {
        List<ModelFile> good = files(1);
        String digest = FIRST.sha256();
        for (Executable call : new Executable[] {
            () -> ModelStore.open(mRoot, null, 1), () -> ModelStore.open(mRoot, CAPABILITY, -1),
            () -> mStore.begin(1, null), () -> mStore.begin(1, asList((ModelFile) null)),
            () -> mStore.begin(1, good.subList(0, 3)), () -> mStore.begin(1, good, null),
            () -> mStore.activate(9), () -> mStore.files(9), () -> mStore.setMaxSizeBytes(-1),
            () -> mStore.begin(1, good).write(null),
            () -> new ModelFile("t", 1, digest.substring(1) + "\u0661"),
            () -> new ModelFile("t", 1, null), () -> new ModelFile(null, 1, digest),
            () -> new ModelFile("t", -1, digest), () -> Capability.of("", "t"),
            () -> Capability.of("n"), () -> Capability.of("n", "t", null),
            () -> Capability.of("SEGMENTATION", "t")}) {
            assertThrows(IllegalArgumentException.class, call);
        }
        assertEquals(FIRST, new ModelFile(FIRST.type(), SIZE, digest.toUpperCase(Locale.ROOT)));
        close(); // with an update that is running
        String message = assertThrows(IllegalArgumentException.class,
                () -> ModelStore.open(mRoot, Capability.SEGMENTATION, 1)).getMessage();
        assertTrue(message.contains("FACE_TRACKING"), message);
    }

    /** Which native code compares with its own tables. */
    @Test
    void knownCapabilitiesHaveTheNativeTypes() {
        for (Capability known : asList(Capability.FACE_TRACKING, Capability.SEGMENTATION)) {
            String[] types = known.types().toArray(new String[0]);
            assertEquals(known, Capability.of(known.name(), types));
        }
    }

    @Test
    void aClosedStoreRefusesEverything() throws IOException {
        update(mStore, 1);
        Update update = mStore.begin(2, files(2));
        assertThrows(IllegalStateException.class, () -> mStore.begin(3, files(3)));
        ModelWriter out = update.write(files(2).get(0));
        mStore.close();
        mStore.close();
        for (Executable call : new Executable[] {() -> mStore.paths(), () -> mStore.versions(),
            () -> mStore.activeVersion(), () -> mStore.begin(2, files(2)), () -> mStore.activate(1),
            () -> mStore.deactivate(), () -> mStore.trimExcept(1), () -> mStore.verify(),
            () -> mStore.files(1), () -> mStore.sizeBytes(), () -> mStore.setMaxSizeBytes(1),
            () -> update.missing(), () -> update.totalBytes(), () -> update.remainingBytes(),
            () -> update.activate(), () -> out.write(1), () -> out.commit()}) {
            assertThrows(IllegalStateException.class, call);
        }
        update.close();
        out.close();
        mStore = Samples.open(mRoot);
        assertActive(1, mStore);
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
        Process process = new ProcessBuilder(System.getProperty("java.home") + "/bin/java",
                "-Djava.library.path=" + mRoot, "-cp", System.getProperty("java.class.path"),
                ModelStoreTest.class.getName(), mRoot.getPath()).redirectErrorStream(true).start();
        List<String> lines = new ArrayList<>();
        new BufferedReader(new InputStreamReader(process.getInputStream())).lines()
                .forEach(lines::add);
        assertEquals(2, lines.size(), lines::toString);
        for (String line : lines) {
            assertTrue(line.contains("libmodelcache.so")
                    && line.contains(System.getProperty("os.arch")), line);
        }
    }
}
