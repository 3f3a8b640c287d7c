package com.lumora.camera.effect.qv.modelcache;

import static com.lumora.camera.effect.qv.modelcache.Samples.*;
import static org.junit.jupiter.api.Assertions.*;

import java.io.*;
import java.nio.file.*;
import java.util.*;
import java.util.concurrent.*;
import java.util.stream.Stream;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.*;

/** The life of a store on disks that strike at each of its steps in turn. */
class StoreFaultTest {
    enum Strike { KILL, FAILURE, CUT_NONE, CUT_LAST, CUT_ALL }

    @TempDir Path mFolder;

    /** Tells at each step which versions may be active, and which files have to be there. */
    private static void live(File root, StandInDisk disk, Set<Integer> active,
            Set<ModelFile> committed) throws IOException {
        // There is room for two versions: version 1 has to go.
        try (ModelStore store = ModelStore.open(root, CAPABILITY, TWO_VERSIONS, disk)) {
            try (Update update = store.begin(3, files(3))) {
                for (ModelFile file : update.missing()) {
                    download(update, file, 3);
                    committed.add(file);
                    disk.pass();
                }
                active.add(3);
                update.activate();
                active.remove(2);
            }
            disk.pass();
            active.add(2);
            store.activate(2);
            active.remove(3);
            committed.clear();
            store.trimExcept();
            disk.pass();
        }
    }

    private interface Life {
        void on(File root, StandInDisk disk) throws IOException;
    }

    /** One life after the other, each of which the disk strikes at a later step, until one is done. */
    private void strike(Strike strike, Life before, Life life, Life after) throws IOException {
        boolean hasStruck = true;
        for (int step = 1; hasStruck; ++step) {
            File root = mFolder.resolve("root" + step).toFile();
            before.on(root, null);
            StandInDisk disk = new StandInDisk(step, strike == Strike.FAILURE);
            disk.trust(root);
            try {
                life.on(root, disk);
            } catch (StandInDisk.Death | IOException struck) {
                assertTrue(disk.hasStruck(), struck.toString());
            }
            hasStruck = disk.hasStruck();
            if (strike.name().startsWith("CUT_")) {
                disk.cutPower(root, StandInDisk.Names.valueOf(strike.name().substring(4)));
            }
            after.on(root, disk);
        }
    }

    @ParameterizedTest
    @EnumSource
    void theActiveVersionIsThereAfterwards(Strike strike) throws Exception {
        Path filled = mFolder.resolve("filled");
        fill(filled);
        Set<Integer> active = new HashSet<>();
        Set<ModelFile> committed = new HashSet<>();
        strike(strike, (root, none) -> {
            copy(filled, root.toPath());
            active.clear();
            active.add(2);
            committed.clear();
        }, (root, disk) -> {
            try (Told told = new Told()) {
                live(root, disk, active, committed);
                assertEquals(disk.hasStruck(), !told.messages.isEmpty(), told.messages.toString());
            }
        }, (root, disk) -> {
            try (ModelStore store = Samples.open(root)) {
                assertTrue(active.contains(store.activeVersion()), root + ": " + store.activeVersion());
                assertActive(store.activeVersion(), store);
                try (Update update = store.begin(3, files(3))) {
                    assertTrue(Collections.disjoint(update.missing(), committed), root.toString());
                }
                update(store, 4);
                assertActive(4, store);
            }
        });
    }

    /** Gives an entry so many bytes, and as many extra ones. */
    private static void replace(FileStore opened, int size) throws IOException {
        try (FileStore store = opened; EntryWriter out = store.write("key")) {
            out.write(new byte[size]);
            out.commit();
            store.setExtra("key", new byte[size]);
        }
    }

    @ParameterizedTest
    @EnumSource
    void extraBytesAreThoseOfTheirEntry(Strike strike) throws Exception {
        strike(strike, (root, none) -> replace(FileStore.open(root, 100), 10),
                (root, disk) -> replace(new FileStore(root, 100, disk, new RootLock(root)), 20),
                (root, disk) -> {
                    try (FileStore store = FileStore.open(root, 100)) {
                        long length = store.get("key").length();
                        byte[] extra = store.extra("key");
                        assertTrue(extra == null ? length == 20 && disk.hasStruck()
                                : extra.length == length, root + ": " + length);
                    }
                });
    }

    private final HookedDisk mDisk = new HookedDisk();

    /** Fails once, at a step with a file of that name. */
    private void failAt(String failing, String name) {
        mDisk.hook = (step, file) -> {
            if (step.equals(failing) && (file == null || file.getName().equals(name))) {
                mDisk.hook = (any, more) -> { };
                throw new IOException("stand-in failure");
            }
        };
    }

    @Test
    void whatTheTableOnDiskMayNeedIsNotDeleted() throws IOException {
        fill(mFolder);
        File root = mFolder.toFile();
        try (ModelStore store = ModelStore.open(root, CAPABILITY, TWO_VERSIONS, mDisk)) {
            failAt("syncFolder", root.getName()); // The table with the other version has its name.
            assertThrows(IOException.class, () -> store.activate(1));
            mDisk.hook = (step, file) -> {
                if (step.equals("delete") && file.getParentFile().getName().equals("extra")) {
                    throw new StandInDisk.Death(); // once the first file has been deleted
                }
            };
            assertThrows(StandInDisk.Death.class, () -> store.trimExcept());
            mDisk.hook = (any, more) -> { };
        }
        try (ModelStore store = Samples.open(root)) {
            assertActive(2, store);
        }
    }

    @Test
    void aFailedCommitTakesNothingFromTheActiveVersion() throws IOException {
        fill(mFolder);
        try (ModelStore store = ModelStore.open(mFolder.toFile(), CAPABILITY, TWO_VERSIONS, mDisk)) {
            Files.write(Paths.get(store.paths().get("pdm_multires.bin")), new byte[SIZE]);
            assertEquals(files(2).subList(3, 4), store.verify());
            try (Update update = store.begin(3, files(3))) {
                for (ModelFile file : update.missing()) {
                    if (file.type().equals("pdm_multires.bin")) {
                        mDisk.hook = (step, at) -> {
                            if (step.equals("rename") && at.getName().equals(".versions")) {
                                throw new IOException("stand-in failure");
                            }
                        };
                        assertThrows(IOException.class, () -> download(update, file, 3));
                        mDisk.hook = (any, more) -> { };
                    } else {
                        download(update, file, 3);
                    }
                }
            }
            assertActive(2, store);
        }
    }

    @Test
    void aWriterThatFailedWritesNoMore() throws Exception {
        ModelFile file = files(1).get(0);
        byte[] bytes = bytes(file.type(), 1);
        String part = ".part-" + file.sha256() + "-" + file.type();
        try (ModelStore store = ModelStore.open(mFolder.toFile(), CAPABILITY, VERSION_SIZE, mDisk);
                Update update = store.begin(1, files(1))) {
            ModelWriter failed = update.write(file);
            assertThrows(IndexOutOfBoundsException.class, () -> failed.write(bytes, 0, SIZE + 1));
            failAt("write", part);
            assertThrows(IOException.class, () -> failed.write(bytes));
            assertThrows(IOException.class, () -> failed.write(bytes));
            assertThrows(IOException.class, failed::commit);
            mDisk.hook = (step, at) -> assertTrue(!step.equals("opened") || at.delete());
            assertThrows(IOException.class, () -> update.write(file), "it cannot be read");
            mDisk.hook = (any, more) -> { };
            ModelWriter shortened = update.write(file);
            shortened.write(bytes);
            Files.write(mFolder.resolve(part), new byte[SIZE - 1]);
            assertThrows(IOException.class, shortened::commit);
            ModelWriter unsynced = update.write(file);
            unsynced.restart();
            unsynced.write(bytes);
            failAt("sync", null);
            assertThrows(IOException.class, unsynced::commit);
            assertEquals(0, update.write(file).offset());
        }
    }

    @Test
    void anUpdateThatEndsIsNotOvertaken() throws Exception {
        ModelFile file = files(1).get(0);
        ExecutorService other = Executors.newSingleThreadExecutor();
        try (ModelStore store = ModelStore.open(mFolder.toFile(), CAPABILITY, VERSION_SIZE, mDisk)) {
            Update update = store.begin(1, files(1));
            update.write(file).write(bytes(file.type(), 1));
            mDisk.hook = (step, part) -> {
                mDisk.hook = (any, more) -> { };
                assertThrows(ExecutionException.class,
                        () -> other.submit(() -> store.begin(2, files(2))).get());
            };
            update.close();
            try (Update next = store.begin(1, files(1))) {
                assertEquals(3, next.missing().size());
            }
        }
        other.shutdown();
    }

    @Test
    void foldersAreSyncedAsTheyAreMade() throws IOException {
        List<String> synced = new ArrayList<>();
        mDisk.hook = (step, folder) -> synced.add(folder.getName());
        mDisk.createFolder(mFolder.resolve("a/b/c").toFile());
        assertEquals(Arrays.asList(mFolder.getFileName().toString(), "a", "b"), synced);
    }
}
