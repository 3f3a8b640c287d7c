package com.lumora.camera.effect.qv.modelcache;

import static com.lumora.camera.effect.qv.modelcache.Samples.*;
import static org.junit.jupiter.api.Assertions.*;

import java.io.*;
import java.nio.file.*;
import java.util.*;
import java.util.concurrent.*;
import java.util.concurrent.atomic.*;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;

/** Eight threads do whatever they like, for MODELCACHE_SECONDS. */
class StoreThreadsTest {
    private static final int THREADS = 8;

    @TempDir File mRoot;

    private interface Step<Store> {
        void on(Store store, Random random) throws Exception;
    }

    private interface Opening<Store> {
        Store open() throws IOException;
    }

    /** Nothing may go wrong but that a store is closed, or busy with another update or writer. */
    private <Store extends Closeable> void storm(Opening<Store> opening, List<Step<Store>> steps)
            throws Exception {
        String seconds = Optional.ofNullable(System.getenv("MODELCACHE_SECONDS")).orElse("3");
        long end = System.nanoTime() + TimeUnit.SECONDS.toNanos(Long.parseLong(seconds));
        AtomicReference<Store> store = new AtomicReference<>(opening.open());
        ExecutorService threads = Executors.newFixedThreadPool(THREADS);
        List<Future<?>> results = new ArrayList<>();
        AtomicInteger done = new AtomicInteger();
        try (Told told = new Told()) {
            for (int i = 0; i < THREADS; ++i) {
                Random random = new Random(i);
                results.add(threads.submit(() -> {
                    while (System.nanoTime() < end) {
                        try {
                            if (random.nextInt(200) == 0) {
                                Store old = store.get();
                                old.close();
                                synchronized (store) {
                                    if (store.get() == old) {
                                        store.set(opening.open());
                                    }
                                }
                            } else {
                                steps.get(random.nextInt(steps.size())).on(store.get(), random);
                                done.incrementAndGet();
                            }
                        } catch (IllegalStateException closedOrBusy) {
                            assertNotNull(closedOrBusy.getMessage());
                        }
                    }
                    return null;
                }));
            }
            for (Future<?> result : results) {
                result.get();
            }
            assertEquals(Collections.emptyList(), told.messages);
        }
        threads.shutdown();
        store.get().close();
        assertTrue(done.get() > 100, "only " + done + " steps");
    }

    @Test
    void aModelStoreIsForAllOfThem() throws Exception {
        try (ModelStore store = Samples.open(mRoot)) {
            update(store, 0);
        }
        Opening<ModelStore> opening =
                () -> ModelStore.open(mRoot, CAPABILITY, 10 * VERSION_SIZE);
        storm(opening, Arrays.asList(
                (store, random) -> update(store, random.nextInt(5)),
                (store, random) -> {
                    Map<String, String> paths = store.paths();
                    assertEquals(4, paths.size());
                    boolean isThere = new File(paths.get("face_tracker_model.bin")).isFile();
                    assertTrue(isThere || store.paths() != paths);
                },
                (store, random) -> assertNotNull(store.activeVersion()),
                (store, random) -> {
                    List<Integer> versions = store.versions();
                    try {
                        store.activate(versions.get(random.nextInt(versions.size())));
                    } catch (IllegalArgumentException trimmed) {
                        // By another thread.
                    }
                },
                (store, random) -> store.trimExcept(random.nextInt(5)),
                (store, random) -> assertEquals(Collections.emptyList(), store.verify())));
        try (ModelStore store = opening.open()) {
            assertActive(store.activeVersion(), store);
        }
    }

    @Test
    void aFileStoreIsForAllOfThem() throws Exception {
        storm(() -> FileStore.open(mRoot, 1000), Arrays.<Step<FileStore>>asList(
                (store, random) -> {
                    String key = "key" + random.nextInt(5);
                    byte[] bytes = Files.readAllBytes(store.getOrFetch(key,
                            (asked, out) -> out.write(asked.getBytes("UTF-8"))).toPath());
                    assertEquals(key, new String(bytes, "UTF-8"));
                },
                (store, random) -> store.get("key0"),
                (store, random) -> {
                    try (EntryWriter out = store.write("own")) {
                        out.write(new byte[10]);
                        out.commit();
                    }
                    store.get("own");
                },
                (store, random) -> store.setExtra("key1", new byte[1]),
                (store, random) -> store.extra("key1"),
                (store, random) -> store.remove("own"),
                (store, random) -> assertTrue(store.size() <= 1000)));
    }
}
