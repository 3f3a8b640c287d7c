package com.lumora.camera.effect.qv.modelcache;

import static com.lumora.camera.effect.qv.modelcache.Samples.*;
import static org.junit.jupiter.api.Assertions.*;

import java.io.*;
import java.nio.file.*;
import java.util.*;
import org.junit.jupiter.api.*;
import org.junit.jupiter.api.io.TempDir;

/** Stores on a small disk of their own, which may be full or read-only. */
class StoreDiskTest {
    @TempDir Path mFolder;
    private File mRoot;

    private int run(String... command) throws Exception {
        return new ProcessBuilder(command).redirectErrorStream(true).start().waitFor();
    }

    @BeforeEach
    void mount() throws Exception {
        mRoot = mFolder.toFile();
        Assumptions.assumeTrue(
                run("mount", "-t", "tmpfs", "-o", "size=200k", "tmpfs", mRoot.getPath()) == 0);
        fill(mFolder);
    }

    @AfterEach
    void unmount() throws Exception {
        run("umount", "-l", mRoot.getPath());
    }

    private void fillDisk() throws IOException {
        try (FileOutputStream out = new FileOutputStream(new File(mRoot, ".filler"))) {
            assertThrows(IOException.class, () -> out.write(new byte[1 << 20]));
        }
    }

    @Test
    void onAFullDiskRoomCanBeMade() throws Exception {
        try (ModelStore store = Samples.open(mRoot);
                Update update = store.begin(3, files(3));
                ModelWriter out = update.write(files(3).get(0))) {
            out.write(new byte[SIZE / 2]);
            fillDisk();
            assertThrows(IOException.class, () -> update.write(files(3).get(1)).write(1));
            assertThrows(IOException.class, () -> store.activate(1));
            assertActive(2, store);
        }
        for (String lost : new String[] {null, "metadata.json", "versioned_index"}) {
            if (lost != null) {
                Files.write(mFolder.resolve(lost), new byte[] {'{'});
                fillDisk();
            }
            try (ModelStore store = Samples.open(mRoot)) {
                assertActive(2, store);
                assertEquals(Arrays.asList(1, 2), store.versions());
            }
        }
        try (ModelStore store = Samples.open(mRoot)) {
            store.trimExcept(1); // parts
            fillDisk();
            assertThrows(IOException.class, () -> store.activate(1));
            store.trimExcept();
            assertActive(2, store);
            for (String name : mRoot.list()) {
                assertFalse(name.startsWith(".part-"), name);
            }
            Files.delete(mFolder.resolve(".filler"));
            update(store, 3);
            assertActive(3, store);
        }
    }

    @Test
    void aReadOnlyDiskCanBeReadFrom() throws Exception {
        for (String damaged : new String[] {".lock", "metadata.json"}) {
            Files.delete(mFolder.resolve(damaged));
            assertEquals(0, run("mount", "-o", "remount,ro", mRoot.getPath()));
            try (ModelStore store = Samples.open(mRoot)) {
                assertActive(2, store);
                assertThrows(IOException.class, () -> store.begin(3, files(3)));
                assertThrows(IOException.class, () -> store.activate(1));
                assertThrows(IOException.class, () -> store.trimExcept());
                assertEquals(0, run("mount", "-o", "remount,rw", mRoot.getPath()));
                store.activate(1);
                update(store, 2);
                assertActive(2, store);
            }
        }
        Files.createDirectory(mFolder.resolve("files"));
        Files.createFile(mFolder.resolve("files/present"));
        assertEquals(0, run("mount", "-o", "remount,ro", mRoot.getPath()));
        assertThrows(IllegalArgumentException.class, () -> FileStore.open(mRoot, 1_000_000));
        try (FileStore store = FileStore.open(new File(mRoot, "files"), 1_000_000)) {
            assertNull(store.get("absent"));
            assertNotNull(store.get("present"));
            assertThrows(IOException.class, () -> store.write("key"));
            assertThrows(IOException.class, () -> store.remove("key"));
        }
        assertEquals(0, run("mount", "-o", "remount,rw", mRoot.getPath()));
        Path elsewhere = Files.createTempDirectory("elsewhere");
        copy(mFolder, elsewhere);
        try (ModelStore other = Samples.open(elsewhere.toFile())) {
            update(other, 3);
            other.trimExcept();
        }
        Files.delete(mFolder.resolve(".lock"));
        assertEquals(0, run("mount", "-o", "remount,ro", mRoot.getPath()));
        try (ModelStore store = Samples.open(mRoot)) {
            assertEquals(0, run("mount", "-o", "remount,rw", mRoot.getPath()));
            assertActive(2, store);
            for (File file : mRoot.listFiles()) { // Another process may do that: nothing is locked.
                new Disk().delete(file);
            }
            copy(elsewhere, mFolder);
            assertEquals(4, store.verify().size());
            try (RandomAccessFile lock = new RandomAccessFile(new File(mRoot, ".lock"), "rw")) {
                assertNotNull(lock.getChannel().lock());
                for (int i = 0; i < 2; ++i) {
                    assertThrows(IOException.class, () -> store.begin(2, files(2)));
                }
            }
            store.begin(2, files(2)).close();
            assertActive(3, store);
        }
        new Disk().delete(elsewhere.toFile());
    }
}
