package com.lumora.camera.effect.qv.modelcache;

import static com.lumora.camera.effect.qv.modelcache.Samples.*;
import static java.util.Arrays.asList;
import static org.junit.jupiter.api.Assertions.*;

import com.zentrel.vistabase.assets.modelcache.facetracker.FacetrackerModelCache;
import java.io.*;
import java.nio.file.*;
import java.util.*;
import org.junit.jupiter.api.*;
import org.junit.jupiter.api.function.Executable;
import org.junit.jupiter.api.io.TempDir;

class ModelStoreTest {
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

    private static String messageOf(Class<? extends Throwable> type, Executable call) {
        return assertThrows(type, call).getMessage();
    }

    @Test
    void versionsComeGoAndComeBack() throws IOException {
        assertActive(null, mStore);
        update(mStore, 2);
        assertActive(2, mStore);
        update(mStore, 1);
        mStore.activate(2);
        assertActive(2, mStore);
        reopen(TWO_VERSIONS);
        assertActive(2, mStore);
        assertEquals(asList(1, 2), mStore.versions());
        mStore.trimExcept();
        assertEquals(asList(2), mStore.versions());
        assertActive(2, mStore);
        assertThrows(IllegalArgumentException.class, () -> mStore.activate(1));
        mStore.trimExcept(9);
        assertActive(2, mStore);
        mStore.begin(3, files(2)).close();
        assertEquals(asList(2, 3), mStore.versions(), "all of its files were there");
        synchronized (mStore) {
            mStore.activate(3);
        }
    }

    @Test
    void rawClassesFindTheSameFiles() throws IOException {
        update(mStore, 1);
        update(mStore, 2);
        Map<String, String> paths = mStore.paths();
        mStore.close();
        try (FileCacheBasicImpl files = new FileCacheBasicImpl(mRoot.getPath(), 1L << 40);
                FacetrackerModelCache models = new FacetrackerModelCache(files)) {
            assertEquals(paths.get("face_tracker_model.bin"), models.getFaceAlignPath(2));
            assertEquals(paths.get("pdm_multires.bin"), models.getMeshPath(1));
            assertNotEquals("", models.getFaceDetectPath(1));
            assertTrue(files.getSize() >= TWO_VERSIONS);
        }
        mStore = Samples.open(mRoot);
        assertActive(2, mStore);
    }

    @Test
    void onlyWhatIsNotThereIsMissing() throws IOException {
        update(mStore, 1);
        try (Update update = mStore.begin(2, files(2))) {
            assertEquals(files(2).subList(0, 2), update.missing());
            // Beside each other, which the store would refuse if a writer held its lock.
            ModelWriter other = update.write(files(2).get(1));
            download(update, files(2).get(0), 2);
            other.close();
            assertEquals(files(2).subList(1, 2), update.missing());
            assertEquals(asList(1), mStore.versions());
            assertThrows(IllegalStateException.class, update::activate);
            assertThrows(IllegalArgumentException.class, () -> update.write(files(2).get(0)));
        }
        reopen(TWO_VERSIONS);
        try (Update update = mStore.begin(2, files(2))) {
            assertEquals(files(2).subList(1, 2), update.missing());
            download(update, files(2).get(1), 2);
        }
        assertActive(1, mStore);
        assertEquals(asList(1, 2), mStore.versions(), "complete, and not active yet");
        mStore.activate(2);
        assertActive(2, mStore);
    }

    @Test
    void anUnfinishedFileIsGoneOnWith() throws IOException {
        ModelFile file = files(1).get(0);
        byte[] bytes = bytes(file.type(), 1);
        try (Update update = mStore.begin(1, files(1))) {
            try (ModelWriter out = update.write(file)) {
                out.write(bytes, 0, 400);
                assertThrows(IllegalStateException.class, () -> update.write(file));
            }
            try (ModelWriter out = update.write(file)) {
                assertEquals(400, out.offset());
                out.restart();
                assertEquals(0, out.offset());
                out.write(bytes[0]);
                out.write(bytes, 1, 599);
            }
        }
        reopen(VERSION_SIZE);
        try (Update update = mStore.begin(1, files(1)); ModelWriter out = update.write(file)) {
            assertEquals(600, out.offset());
            out.write(bytes, 600, 400);
        }
        reopen(VERSION_SIZE);
        try (Update update = mStore.begin(1, files(1))) {
            assertFalse(update.missing().contains(file), "written to the end, but not committed");
        }
        mStore.trimExcept();
        try (Update update = mStore.begin(1, files(1))) {
            assertEquals(4, update.missing().size(), "files of no version go, too");
        }
    }

    @Test
    void whatIsNotWhatItShouldBeIsDropped() throws IOException {
        ModelFile file = files(1).get(0);
        byte[] wrong = bytes(file.type(), 7);
        try (Update update = mStore.begin(1, files(1))) {
            for (int size : new int[] {0, SIZE - 1, SIZE + 1, SIZE}) {
                ModelWriter out = update.write(file);
                out.restart();
                String message = messageOf(StoreException.class, () -> {
                    out.write(Arrays.copyOf(wrong, size));
                    out.commit();
                });
                String expected = size == SIZE ? file.sha256() : String.valueOf(SIZE);
                String actual = size == SIZE ? file(file.type(), wrong).sha256() : size + " bytes";
                assertTrue(message.contains(expected) && message.contains(actual), message);
                assertThrows(IOException.class, () -> out.write(1));
                assertEquals(4, update.missing().size());
                try (ModelWriter next = update.write(file)) {
                    assertEquals(size < SIZE ? size : 0, next.offset());
                }
            }
        }
    }

    @Test
    void badArgumentsAreRefused() {
        List<ModelFile> good = files(1);
        ModelFile foreign = new ModelFile("seg_init_net.pb", 1, good.get(0).sha256());
        ModelFile longer = new ModelFile(good.get(3).type(), SIZE + 1, good.get(0).sha256());
        List<List<ModelFile>> bad = asList(good.subList(0, 3), asList(), asList((ModelFile) null),
                asList(good.get(0), good.get(1), good.get(2), longer),
                asList(good.get(0), good.get(1), good.get(2), foreign),
                asList(good.get(0), good.get(1), good.get(2), good.get(2)));
        assertThrows(IllegalArgumentException.class, () -> ModelStore.open(mRoot, null, 1));
        for (List<ModelFile> files : bad) {
            assertThrows(IllegalArgumentException.class, () -> mStore.begin(1, files));
        }
        String digest = good.get(0).sha256();
        for (String text : new String[] {"", digest + "0", digest.substring(1) + "g", null,
            digest.substring(1) + "\u0661"}) {
            assertThrows(IllegalArgumentException.class, () -> new ModelFile("t", 1, text));
        }
        assertEquals(good.get(0),
                new ModelFile(good.get(0).type(), SIZE, digest.toUpperCase(Locale.ROOT)));
        assertThrows(IllegalArgumentException.class, () -> new ModelFile("t", -1, digest));
        assertThrows(IllegalArgumentException.class,
                () -> ModelStore.open(mRoot, CAPABILITY, -1));
    }

    @Test
    void oneUpdateAndOneStoreAtATime() throws IOException {
        update(mStore, 1);
        Update update = mStore.begin(2, files(2));
        assertThrows(IllegalStateException.class, () -> mStore.begin(3, files(3)));
        ModelWriter out = update.write(files(2).get(0));
        String message = messageOf(IOException.class, () -> Samples.open(mRoot));
        assertTrue(message.contains("in this process already"), message);
        assertThrows(IOException.class, () -> FileStore.open(new File(mRoot, "../" + mRoot.getName()), 1));
        mStore.close();
        mStore.close();
        for (Executable call : new Executable[] {() -> mStore.paths(), () -> mStore.versions(),
            () -> mStore.activeVersion(), () -> mStore.begin(2, files(2)), () -> mStore.activate(1),
            () -> mStore.trimExcept(1), () -> mStore.verify(), () -> update.missing(),
            () -> update.activate(), () -> out.write(1)}) {
            assertThrows(IllegalStateException.class, call);
        }
        update.close();
        mStore = Samples.open(mRoot);
        assertThrows(IllegalArgumentException.class,
                () -> ModelStore.open(new File(mRoot, "x"), Capability.SEGMENTATION, -1));
        mStore.close();
        message = messageOf(IllegalArgumentException.class,
                () -> ModelStore.open(mRoot, Capability.SEGMENTATION, 1));
        assertTrue(message.contains("FACE_TRACKING"), message);
    }

    @Test
    void roomIsMadeOfTheOldestInactiveVersionsThenOfFilesOfNone() throws IOException {
        update(mStore, 1);
        update(mStore, 2);
        update(mStore, 3);
        mStore.activate(1); // Of the others, 2 has not been active for longer.
        Files.write(new File(mRoot, "stray").toPath(), new byte[10]);
        reopen(TWO_VERSIONS + 2 * SIZE + 10);
        assertEquals(asList(1, 2, 3), mStore.versions());
        mStore.begin(4, files(4)).close();
        assertEquals(asList(1, 3), mStore.versions());
        reopen(TWO_VERSIONS + 9);
        mStore.begin(4, files(4)).close();
        assertEquals(asList(1), mStore.versions());
        assertFalse(new File(mRoot, "stray").exists());
        assertActive(1, mStore);

        reopen(TWO_VERSIONS - 1);
        String message = messageOf(IOException.class, () -> mStore.begin(4, files(4)));
        assertTrue(message.contains(" " + TWO_VERSIONS + " ")
                && message.contains(" " + (TWO_VERSIONS - 1)), message);
        List<ModelFile> huge = new ArrayList<>(files(4));
        huge.set(0, new ModelFile(huge.get(0).type(), Long.MAX_VALUE, huge.get(0).sha256()));
        huge.set(1, new ModelFile(huge.get(1).type(), Long.MAX_VALUE, huge.get(1).sha256()));
        assertThrows(IOException.class, () -> mStore.begin(4, huge));
        reopen(TWO_VERSIONS);
        update(mStore, 4);
        assertActive(4, mStore);
    }

    @Test
    void damagedFilesAreFoundAndGotAgain() throws IOException {
        update(mStore, 1);
        update(mStore, 2);
        Path flipped = Paths.get(mStore.paths().get(CAPABILITY.types().get(0)));
        Files.write(flipped, bytes(CAPABILITY.types().get(0), 1));
        assertEquals(files(2).subList(0, 1), mStore.verify());
        mStore.activate(1);
        assertThrows(IOException.class, () -> mStore.activate(2));
        assertTrue(new File(mStore.paths().get(CAPABILITY.types().get(3))).delete());
        List<ModelFile> both = asList(files(2).get(0), files(2).get(3));
        assertTrue(mStore.verify().containsAll(both));
        reopen(TWO_VERSIONS); // There is room for what is to be replaced, though not for more.
        try (Update update = mStore.begin(2, files(2))) {
            for (int i = 0; i < 2; ++i) { // once more, after damage while the update runs
                assertTrue(update.missing().contains(files(2).get(0)));
                assertThrows(IllegalStateException.class, update::activate);
                for (ModelFile file : update.missing()) {
                    download(update, file, 2);
                }
                if (i == 0) {
                    Files.write(flipped, bytes(CAPABILITY.types().get(0), 1));
                    assertEquals(files(2).subList(0, 1), mStore.verify());
                }
            }
            update.activate();
        }
        assertActive(2, mStore);
    }

    @Test
    void aVersionMayBePublishedAgainWithOneFileForAllTypes() throws IOException {
        update(mStore, 1);
        List<ModelFile> files = new ArrayList<>();
        for (String type : CAPABILITY.types()) {
            files.add(file(type, bytes("face_tracker_model.bin", 2)));
        }
        try (Update update = mStore.begin(1, files)) {
            assertEquals(files.subList(0, 1), update.missing());
            download(update, files.get(0), 2);
            assertActive(1, mStore);
            update.activate();
        }
        reopen(TWO_VERSIONS);
        assertEquals(1, mStore.activeVersion());
        assertEquals(CAPABILITY.types(), new ArrayList<>(mStore.paths().keySet()));
        assertEquals(1, new HashSet<>(mStore.paths().values()).size());
    }

}
