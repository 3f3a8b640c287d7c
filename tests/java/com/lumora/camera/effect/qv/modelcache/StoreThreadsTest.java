package com.lumora.camera.effect.qv.modelcache;

import static com.lumora.camera.effect.qv.modelcache.Samples.*;
import static org.junit.jupiter.api.Assertions.*;

import java.io.*;
import java.nio.file.Files;
import java.util.*;
import java.util.concurrent.*;
import java.util.concurrent.atomic.*;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.function.*;
import org.junit.jupiter.api.io.TempDir;

/** Eight threads use both stores for MODELCACHE_SECONDS, while these are closed and reopened. */
class StoreThreadsTest {
    @TempDir File mRoot;
    private final AtomicReference<ModelStore> mModels = new AtomicReference<>();
    private final AtomicReference<FileStore> mFiles = new AtomicReference<>();
    private final Map<Executable, Integer> mDone = new ConcurrentHashMap<>();

    /** Closes what is open, if anything. */
    private <T extends Closeable> void reopen(AtomicReference<T> store, ThrowingSupplier<T> opening)
            throws Throwable {
        synchronized (store) {
            if (store.get() != null) {
                store.get().close();
            }
            store.set(opening.get());
        }
    }

    private void reopenModels() throws Throwable {
        File root = new File(mRoot, "models");
        reopen(mModels, () -> ModelStore.open(root, CAPABILITY, 10 * VERSION_SIZE));
    }

    private void reopenFiles() throws Throwable {
        reopen(mFiles, () -> FileStore.open(new File(mRoot, "files"), SIZE));
    }

    private Executable[] steps(Random random) {
        return new Executable[] {
            () -> update(mModels.get(), random.nextInt(5)),
            () -> mModels.get().trimExcept(random.nextInt(5)),
            () -> mModels.get().activate(mModels.get().versions().get(0)),
            () -> assertEquals(Collections.emptyList(), mModels.get().verify()),
            () -> {
                ModelStore store = mModels.get();
                Map<String, String> paths = store.paths();
                assertEquals(4, paths.size());
                boolean isThere = new File(paths.get(Capability.FACE_TRACKER)).isFile();
                assertTrue(isThere || store.paths() != paths, "deleted, and still active");
            },
            () -> {
                String key = "key" + random.nextInt(5);
                File file = mFiles.get().getOrFetch(key,
                        (asked, out) -> out.write(asked.getBytes("UTF-8")));
                assertEquals(key, new String(Files.readAllBytes(file.toPath()), "UTF-8"));
            },
            () -> mFiles.get().setExtra("key0", new byte[1]),
            this::reopenModels,
            this::reopenFiles,
        };
    }

    private Void work(Random random, long end) throws Exception {
        Executable[] steps = steps(random);
        while (System.nanoTime() < end) {
            int step = random.nextInt(10 * steps.length);
            try {
                steps[step < 2 ? steps.length - 1 - step : step % (steps.length - 2)].execute();
                mDone.merge(steps[0], 1, Integer::sum);
            } catch (IllegalStateException | IllegalArgumentException closedBusyOrTrimmed) {
                assertNotNull(closedBusyOrTrimmed.getMessage());
            } catch (Throwable failure) {
                throw new AssertionError(failure);
            }
        }
        return null;
    }

    @Test
    void storesServeEightThreads() throws Throwable {
        reopenModels();
        reopenFiles();
        update(mModels.get(), 0);
        String seconds = Optional.ofNullable(System.getenv("MODELCACHE_SECONDS")).orElse("3");
        long end = System.nanoTime() + TimeUnit.SECONDS.toNanos(Long.parseLong(seconds));
        ExecutorService threads = Executors.newFixedThreadPool(8);
        AtomicInteger seed = new AtomicInteger();
        try (Told told = new Told()) {
            for (Future<Void> result : threads.invokeAll(Collections.<Callable<Void>>nCopies(
                    8, () -> work(new Random(seed.getAndIncrement()), end)))) {
                result.get();
            }
            assertEquals(Collections.emptyList(), told.messages);
        }
        threads.shutdown();
        mDone.forEach((thread, count) -> assertTrue(count > 10, "only " + count + " steps"));
        assertActive(mModels.get().activeVersion(), mModels.get());
        mModels.get().close();
        mFiles.get().close();
    }
}
