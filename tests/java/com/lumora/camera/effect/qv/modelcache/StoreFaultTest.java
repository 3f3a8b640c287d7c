package com.lumora.camera.effect.qv.modelcache;

import static com.lumora.camera.effect.qv.modelcache.Samples.*;
import static org.junit.jupiter.api.Assertions.*;

import java.io.*;
import java.nio.file.*;
import java.util.*;
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

    @ParameterizedTest
    @EnumSource
    void theActiveVersionIsThereAfterwards(Strike strike) throws Exception {
        Path filled = mFolder.resolve("filled");
        fill(filled);
        boolean hasStruck = true;
        for (int step = 1; hasStruck; ++step) {
            File root = mFolder.resolve("root" + step).toFile();
            copy(filled, root.toPath());
            StandInDisk disk = new StandInDisk(step, strike == Strike.FAILURE);
            disk.trust(root);
            Set<Integer> active = new HashSet<>(Collections.singleton(2));
            Set<ModelFile> committed = new HashSet<>();
            try (Told told = new Told()) {
                live(root, disk, active, committed);
                assertEquals(disk.hasStruck(), !told.messages.isEmpty(),
                        "step " + step + ": " + told.messages);
            } catch (StandInDisk.Death death) {
                assertNotEquals(Strike.FAILURE, strike);
            } catch (IOException failure) {
                assertEquals(Strike.FAILURE, strike, failure.toString());
            }
            hasStruck = disk.hasStruck();
            if (strike.name().startsWith("CUT_")) {
                disk.cutPower(root, StandInDisk.Names.valueOf(strike.name().substring(4)));
            }
            try (ModelStore store = Samples.open(root)) {
                assertTrue(active.contains(store.activeVersion()), "step " + step + ": " + store.activeVersion());
                assertActive(store.activeVersion(), store);
                try (Update update = store.begin(3, files(3))) {
                    assertTrue(Collections.disjoint(update.missing(), committed), "step " + step);
                }
                update(store, 4);
                assertActive(4, store);
            }
        }
    }

    /** Replaces an entry and its extra bytes. */
    private static void replace(File root, Disk disk) throws IOException {
        try (FileStore store = new FileStore(root, 100, disk, new RootLock(root));
                EntryWriter out = store.write("key")) {
            out.write(new byte[20]);
            out.commit();
            store.setExtra("key", new byte[20]);
        }
    }

    @ParameterizedTest
    @EnumSource
    void extraBytesAreThoseOfTheirEntry(Strike strike) throws Exception {
        boolean hasStruck = true;
        for (int step = 1; hasStruck; ++step) {
            File root = mFolder.resolve("root" + step).toFile();
            try (FileStore store = FileStore.open(root, 100); EntryWriter out = store.write("key")) {
                out.write(new byte[10]);
                out.commit();
                store.setExtra("key", new byte[10]);
            }
            StandInDisk disk = new StandInDisk(step, strike == Strike.FAILURE);
            disk.trust(root);
            try {
                replace(root, disk);
            } catch (StandInDisk.Death | IOException struck) {
                assertTrue(disk.hasStruck(), struck.toString());
            }
            hasStruck = disk.hasStruck();
            if (strike.name().startsWith("CUT_")) {
                disk.cutPower(root, StandInDisk.Names.valueOf(strike.name().substring(4)));
            }
            try (FileStore store = FileStore.open(root, 100)) {
                long length = store.get("key").length();
                byte[] extra = store.extra("key");
                assertTrue(extra == null ? length == 20 : extra.length == length,
                        "step " + step + ": " + length + Arrays.toString(extra));
                assertTrue(hasStruck || extra != null);
            }
        }
    }

    @Test
    void whatTheTableOnDiskMayNeedIsNotDeleted() throws IOException {
        fill(mFolder);
        File root = mFolder.toFile();
        String[] plan = {""};
        Disk disk = new Disk() {
            @Override
            void syncFolder(File folder) throws IOException {
                if (plan[0].equals("fail")) {
                    throw new IOException("stand-in failure");
                }
                super.syncFolder(folder);
            }

            @Override
            void delete(File file) throws IOException {
                super.delete(file);
                if (plan[0].equals("die")) {
                    throw new StandInDisk.Death();
                }
            }
        };
        try (ModelStore store = ModelStore.open(root, CAPABILITY, TWO_VERSIONS, disk)) {
            plan[0] = "fail"; // after the table with the other active version has its name
            assertThrows(IOException.class, () -> store.activate(1));
            plan[0] = "die";
            assertThrows(StandInDisk.Death.class, () -> store.trimExcept());
        }
        try (ModelStore store = Samples.open(root)) {
            assertActive(2, store);
        }
    }
}
