package com.lumora.camera.effect.qv.modelcache;

import static com.lumora.camera.effect.qv.modelcache.Samples.*;
import static com.lumora.camera.effect.qv.modelcache.StoreException.Reason.*;
import static java.util.Arrays.asList;
import static org.junit.jupiter.api.Assertions.*;

import java.io.*;
import java.nio.file.*;
import java.util.*;
import java.util.concurrent.*;
import java.util.concurrent.atomic.AtomicInteger;
import org.junit.jupiter.api.*;
import org.junit.jupiter.api.io.TempDir;

/** What Java adds to a FileStore. What a store does is tested natively. */
class FileStoreTest {
    private static final ModelFile KNOWN = files(1).get(0);
    private static final byte[] KNOWN_BYTES = bytes(KNOWN.type(), 1);

    @TempDir File mRoot;
    private FileStore mStore;
    private final ExecutorService mThreads = Executors.newFixedThreadPool(4);

    @BeforeEach
    void open() throws IOException {
        mStore = FileStore.open(mRoot, SIZE);
    }

    @AfterEach
    void close() {
        mThreads.shutdownNow();
        mStore.close();
    }

    /** Fetches the known content, of which no more than `most` bytes come. */
    private File fetchKnown(int most) throws IOException {
        return mStore.getOrFetch("known", SIZE, KNOWN.sha256(), (key, out) -> {
            int offset = (int) out.offset();
            out.write(KNOWN_BYTES, offset, Math.min(most, SIZE - offset));
        });
    }

    @Test
    void anyTextIsAKey() throws IOException {
        for (String key : new String[] {"a/b", "gr\u00F6\u00DFe", "\uD83D\uDE00", "\uD83D", "\0"}) {
            try (EntryWriter out = mStore.write(key)) {
                out.write(1);
                out.commit();
            }
            assertTrue(mStore.setExtra(key, key.getBytes("UTF-8")));
            assertEquals(asList(key), mStore.keys());
            assertEquals(1, mStore.get(key).length());
            assertArrayEquals(key.getBytes("UTF-8"), mStore.extra(key));
            assertTrue(mStore.remove(key));
            assertFalse(mStore.remove(key));
            assertNull(mStore.get(key));
            assertNull(mStore.extra(key));
            assertFalse(mStore.setExtra(key, new byte[1]));
        }
    }

    @Test
    void entriesAreCountedClearedAndBounded() throws IOException {
        assertEquals(SIZE, fetchKnown(SIZE).length());
        assertEquals(SIZE, mStore.size());
        mStore.clear();
        assertEquals(asList(), mStore.keys());
        mStore.setMaxSizeBytes(SIZE - 1);
        assertFails(NO_ROOM, () -> fetchKnown(SIZE));
    }

    @Test
    void knownContentIsCheckedAndResumed() throws IOException {
        assertFails(TOO_SHORT, () -> fetchKnown(400));
        close();
        open();
        try (EntryWriter out = mStore.write("known", SIZE, KNOWN.sha256())) {
            assertEquals(400, out.offset());
        }
        assertArrayEquals(KNOWN_BYTES, Files.readAllBytes(fetchKnown(SIZE).toPath()));
        assertEquals(SIZE, mStore.getOrFetch("known", SIZE, KNOWN.sha256(),
                (key, out) -> fail("it is there")).length());
        assertFails(WRONG_CONTENT, () -> mStore.getOrFetch("other", SIZE, KNOWN.sha256(),
                (key, out) -> out.write(new byte[SIZE])));
    }

    @Test
    void oneOfManyThreadsFetches() throws Exception {
        AtomicInteger fetches = new AtomicInteger();
        CyclicBarrier start = new CyclicBarrier(4);
        List<Future<File>> files = mThreads.invokeAll(Collections.nCopies(4, () -> {
            start.await();
            return mStore.getOrFetch("key", (key, out) -> {
                fetches.incrementAndGet();
                out.write(new byte[7]);
            });
        }));
        for (Future<File> file : files) {
            assertEquals(7, file.get().length());
        }
        assertEquals(1, fetches.get());
    }

    @Test
    void whatAFetcherThrowsArrivesAsItIs() throws IOException {
        IOException cut = new StoreException(TOO_SHORT, "cut off");
        assertSame(cut, assertThrows(IOException.class, () -> mStore.getOrFetch("key",
                (key, out) -> {
                    out.write(1);
                    throw cut;
                })));
        assertThrows(ArithmeticException.class, () -> mStore.getOrFetch("key",
                (key, out) -> System.exit(1 / (int) mStore.size())));
        assertNull(mStore.get("key"));
        assertEquals(1, mStore.getOrFetch("key", (key, out) -> {
            out.write(1);
            out.close(); // which commits nothing
        }).length());
    }

    @Test
    void fetchersThatWaitForEachOtherAreRefused() throws Exception {
        assertThrows(IllegalStateException.class, () -> mStore.getOrFetch("key",
                (key, out) -> mStore.getOrFetch(key, (again, ignored) -> { })));
        CyclicBarrier bothFetch = new CyclicBarrier(2);
        List<Future<File>> crossed = new ArrayList<>();
        for (String[] keys : new String[][] {{"x", "y"}, {"y", "x"}}) {
            crossed.add(mThreads.submit(() -> mStore.getOrFetch(keys[0], (key, out) -> {
                assertDoesNotThrow(() -> bothFetch.await());
                mStore.getOrFetch(keys[1], (other, ignored) -> { });
            })));
        }
        for (Future<File> each : crossed) {
            assertThrows(ExecutionException.class, () -> each.get(10, TimeUnit.SECONDS));
        }
    }

    @Test
    void badArgumentsAreRefused() {
        assertEachThrows(IllegalArgumentException.class,
                () -> FileStore.open(mRoot, -1), () -> mStore.setMaxSizeBytes(-1),
                () -> mStore.get(""), () -> mStore.write("key", 1, "00"),
                () -> mStore.setExtra("key", new byte[(16 << 20) + 1]));
        assertEachThrows(NullPointerException.class,
                () -> mStore.get(null), () -> mStore.write(null), () -> FileStore.open(null, 1),
                () -> mStore.write("key", 1, null), () -> mStore.setExtra("key", null));
    }

    @Test
    void aClosedStoreRefusesEverything() throws IOException {
        EntryWriter out = mStore.write("open");
        close();
        assertEachThrows(IllegalStateException.class, () -> mStore.get("key"), mStore::keys,
                () -> mStore.write("key"), mStore::size, () -> mStore.setMaxSizeBytes(1),
                () -> out.write(1), out::commit);
    }
}
