package com.lumora.camera.effect.qv.modelcache;

import static com.lumora.camera.effect.qv.modelcache.Samples.*;
import static org.junit.jupiter.api.Assertions.*;

import java.io.*;
import java.nio.file.*;
import java.util.*;
import java.util.zip.CRC32;
import org.junit.jupiter.api.*;
import org.junit.jupiter.api.io.TempDir;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.ValueSource;

/** Each of the store's own files is damaged in every way that a loop can reach. */
class StoreDamageTest {
    @TempDir Path mFolder;
    private Path mRoot;

    @BeforeEach
    void fillRoot() throws IOException {
        mRoot = mFolder.resolve("root");
        fill(mRoot);
        try (ModelStore store = Samples.open(mRoot.toFile())) {
            assertEquals(2, store.versions().size());
        }
    }

    private interface Damage {
        void to(Path file) throws IOException;
    }

    /** The active version is back at once, and once mended nothing is left to mend. */
    private void mends(String name, Damage damage) throws IOException {
        Path root = mFolder.resolve("damaged");
        copy(mRoot, root);
        damage.to(root.resolve(name));
        Path aside = root.resolve(".metadata.json.damaged");
        for (boolean isFirst : new boolean[] {true, false}) {
            try (Told told = new Told(); ModelStore store = Samples.open(root.toFile())) {
                assertEquals(2, store.activeVersion(), name);
                assertEquals(Arrays.asList(1, 2), store.versions(), name);
                boolean isTold = isFirst && (name.equals("metadata.json") ? Files.exists(aside)
                        : !name.equals(".lock"));
                assertEquals(isTold, !told.messages.isEmpty(), name + told.messages);
                assertTrue(name.equals("metadata.json") || !Files.exists(aside));
            }
        }
        new Disk().delete(root.resolve(name).toFile());
        new Disk().delete(aside.toFile());
    }

    @ParameterizedTest
    @ValueSource(strings = {
        ".versions", "extra/.versions", "versioned_index", "metadata.json", ".lock"})
    void whateverBecomesOfAnOwnFile(String name) throws IOException {
        byte[] bytes = Files.readAllBytes(mRoot.resolve(name));
        for (int i = 0; i < bytes.length; ++i) {
            byte[] cut = Arrays.copyOf(bytes, i);
            mends(name, file -> Files.write(file, cut));
            byte[] flipped = bytes.clone();
            flipped[i] ^= 1 << i % 8;
            mends(name, file -> Files.write(file, flipped));
        }
        mends(name, Files::delete);
        mends(name, file -> {
            Files.delete(file);
            Files.createDirectory(file);
            Files.createFile(file.resolve("inside"));
        });
    }

    private void replaceInTables(String part, String by) throws IOException {
        String text = new String(Files.readAllBytes(mRoot.resolve(".versions")), "UTF-8");
        String checked = text.substring(0, text.lastIndexOf("check ")).replace(part, by);
        CRC32 sum = new CRC32();
        sum.update(checked.getBytes("UTF-8"));
        byte[] bytes = (checked + "check " + Long.toHexString(sum.getValue()) + "\n").getBytes("UTF-8");
        Files.write(mRoot.resolve(".versions"), bytes);
        Files.write(mRoot.resolve("extra/.versions"), bytes);
    }

    @Test
    void withoutAnyTableTheIndexTellsWhatTheDigestsConfirm() throws IOException {
        try (ModelStore store = Samples.open(mRoot.toFile())) {
            store.activate(1);
        }
        replaceInTables("file face_tracker_model.bin 1000 ", "file face_tracker_model.bin ../");
        try (ModelStore store = Samples.open(mRoot.toFile())) {
            assertEquals(Arrays.asList(1, 2), store.versions());
            assertActive(1, store);
        }
        Files.delete(mRoot.resolve(".versions"));
        Files.delete(mRoot.resolve("extra/.versions"));
        Files.write(mRoot.resolve(files(1).get(0).sha256() + "-face_tracker_model.bin"),
                new byte[SIZE]);
        try (ModelStore store = Samples.open(mRoot.toFile())) {
            assertEquals(Arrays.asList(2), store.versions());
            assertActive(2, store);
        }
    }

    @Test
    void versionsOfTypesOfOtherReleasesAreGotAgain() throws IOException {
        replaceInTables("file pdm_multires.bin", "file pdm_other.bin");
        try (Told told = new Told(); ModelStore store = Samples.open(mRoot.toFile())) {
            assertActive(null, store);
            assertFalse(told.messages.isEmpty());
            update(store, 2);
            assertActive(2, store);
        }
    }
}
