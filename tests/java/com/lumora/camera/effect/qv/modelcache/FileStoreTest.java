package com.lumora.camera.effect.qv.modelcache;

import static org.junit.jupiter.api.Assertions.*;

import java.io.*;
import java.nio.file.*;
import java.util.*;
import java.util.concurrent.*;
import java.util.concurrent.atomic.AtomicInteger;
import org.junit.jupiter.api.*;
import org.junit.jupiter.api.io.TempDir;

class FileStoreTest {
    @TempDir File mRoot;
    private FileStore mStore;

    @BeforeEach
    void open() throws IOException {
        mStore = FileStore.open(mRoot, 100);
    }

    @AfterEach
    void close() {
        mStore.close();
    }

    private void put(String key, int size) throws IOException {
        try (EntryWriter out = mStore.write(key)) {
            out.write(new byte[size]);
            out.commit();
        }
    }

    @Test
    void anyTextIsAKey() throws IOException {
        String[] keys = {"plain-key_1.bin", "a/b", "..", ".", ".hidden", "metadata.json", "extra",
            "versioned_index", "%", "%extra", "gr\u00F6\u00DFe", "\uD83D\uDE00", "\uD83D", "a:b", "\0", " "};
        for (String key : keys) {
            put(key, 1);
            assertTrue(mStore.setExtra(key, key.getBytes("UTF-8")));
        }
        assertEquals(keys.length, mStore.size());
        close();
        open();
        for (String key : keys) {
            assertEquals(1, mStore.get(key).length(), key);
            assertEquals(mRoot.getAbsoluteFile(), mStore.get(key).getParentFile());
            assertArrayEquals(key.getBytes("UTF-8"), mStore.extra(key));
            assertTrue(mStore.remove(key));
            assertFalse(mStore.remove(key));
            assertNull(mStore.get(key));
            assertNull(mStore.extra(key));
            assertFalse(mStore.setExtra(key, new byte[1]));
        }
        assertEquals(0, mStore.size());
        put(String.join("", Collections.nCopies(244, "x")), 1);
    }

    @Test
    void whatWasNotUsedForLongestGoesWhateverTheClockSays() throws IOException {
        for (String key : new String[] {"a", "b", "c", "d"}) {
            put(key, 25);
        }
        // As if the clock had been ahead by years when "a" was used, and "b" a millisecond later.
        long future = System.currentTimeMillis() + (1L << 40);
        assertTrue(mStore.get("b").setLastModified(future));
        close();
        open();
        mStore.get("a");
        put("e", 30);
        assertNotNull(mStore.get("a"));
        assertNotNull(mStore.get("b"));
        assertNotNull(mStore.get("e"));
        assertNull(mStore.get("c"));
        assertNull(mStore.get("d"));
        put("a", 100);
        assertEquals(100, mStore.size());
        EntryWriter tooLarge = mStore.write("f");
        assertThrows(IOException.class, () -> tooLarge.write(new byte[101]));
        tooLarge.close();
        assertNotNull(mStore.get("a"));
    }

    @Test
    void aFailedWriteLeavesWhatWasThere() throws IOException {
        put("key", 10);
        mStore.setExtra("key", new byte[1]);
        EntryWriter out = mStore.write("key");
        assertThrows(IllegalStateException.class, () -> mStore.write("key"));
        out.write(new byte[50]);
        mStore.setExtra("key", new byte[2]);
        assertEquals(50, new File(mRoot, ".part-key").length(), "untouched");
        out.close();
        assertThrows(IOException.class, () -> out.write(1));
        assertThrows(IOException.class, out::commit);
        assertEquals(10, mStore.get("key").length());
        assertEquals(2, mStore.extra("key").length);
        File old = mStore.get("key");
        put("key", 20);
        assertEquals(20, old.length());
        assertNull(mStore.extra("key"), "which were of what was there");
        assertEquals(new HashSet<>(Arrays.asList(".lock", ".store", "extra", "key")),
                new HashSet<>(Arrays.asList(mRoot.list())));
        Files.write(mRoot.toPath().resolve(".part-key"), new byte[5]);
        close();
        open();
        assertFalse(new File(mRoot, ".part-key").exists());
    }

    @Test
    void oneOfManyFetches() throws Exception {
        AtomicInteger fetches = new AtomicInteger();
        CyclicBarrier start = new CyclicBarrier(4);
        ExecutorService threads = Executors.newFixedThreadPool(4);
        List<Future<File>> files = new ArrayList<>();
        for (int i = 0; i < 4; ++i) {
            files.add(threads.submit(() -> {
                start.await();
                return mStore.getOrFetch("key", (key, out) -> {
                    fetches.incrementAndGet();
                    out.write(new byte[7]);
                });
            }));
        }
        for (Future<File> file : files) {
            assertEquals(7, file.get().length());
        }
        threads.shutdown();
        assertEquals(1, fetches.get());
        IOException failure = assertThrows(IOException.class, () -> mStore.getOrFetch("other",
                (key, out) -> {
                    out.write(1);
                    throw new IOException("no network");
                }));
        assertEquals("no network", failure.getMessage());
        assertNull(mStore.get("other"));
        assertThrows(IllegalStateException.class, () -> mStore.getOrFetch("other",
                (key, out) -> mStore.getOrFetch(key, (again, ignored) -> { })));
        assertThrows(ArithmeticException.class, () -> mStore.getOrFetch("other", (key, out) -> {
            out.close();
            throw new ArithmeticException("as it is");
        }));
        CyclicBarrier bothFetch = new CyclicBarrier(2);
        ExecutorService two = Executors.newFixedThreadPool(2);
        List<Future<File>> crossed = new ArrayList<>();
        for (String[] keys : new String[][] {{"x", "y"}, {"y", "x"}}) {
            crossed.add(two.submit(() -> mStore.getOrFetch(keys[0], (key, out) -> {
                try {
                    bothFetch.await();
                } catch (Exception broken) {
                    throw new IOException(broken);
                }
                mStore.getOrFetch(keys[1], (other, ignored) -> { });
            })));
        }
        for (Future<File> each : crossed) {
            assertThrows(ExecutionException.class, () -> each.get(10, TimeUnit.SECONDS));
        }
        assertEquals(0, mStore.getOrFetch("other", (key, out) -> out.close()).length());
        two.shutdown();
    }

    @Test
    void nullMeansThatItIsNotThere() throws IOException {
        put("key", 1);
        close();
        assertThrows(IllegalStateException.class, () -> mStore.get("key"));
        assertThrows(IllegalStateException.class, () -> mStore.write("key"));
        open();
        Samples.delete(mRoot);
        Files.write(mRoot.toPath(), new byte[0]);
        assertThrows(IOException.class, () -> mStore.get("key"));
        Files.delete(mRoot.toPath());
        mRoot.mkdir();
        assertThrows(IOException.class, () -> mStore.get("key"), "it is not the store's root");
    }

    @Test
    void foreignThingsInTheRootAreEntriesAndLinksAreNotFollowed() throws IOException {
        Path outside = Files.createTempDirectory("outside");
        Files.write(outside.resolve("kept"), new byte[1]);
        Files.createDirectories(mRoot.toPath().resolve("dir/sub"));
        Files.write(mRoot.toPath().resolve("dir/sub/file"), new byte[40]);
        Files.createSymbolicLink(mRoot.toPath().resolve("dir/link"), outside);
        Files.createSymbolicLink(mRoot.toPath().resolve("link"), outside);
        assertEquals(40, mStore.size());
        assertTrue(mStore.remove("link"));
        put("dir", 100);
        assertEquals(100, mStore.get("dir").length());
        assertTrue(Files.exists(outside.resolve("kept")));
        Samples.delete(outside.toFile());
    }
}
