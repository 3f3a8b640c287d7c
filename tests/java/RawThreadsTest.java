import static org.junit.jupiter.api.Assertions.*;

import com.lumora.camera.effect.qv.modelcache.*;
import com.zentrel.vistabase.assets.modelcache.segmentation.SegmentationModelCache;
import java.nio.file.*;
import java.util.*;
import java.util.concurrent.*;
import org.junit.jupiter.api.*;
import org.junit.jupiter.api.function.Executable;

class RawThreadsTest extends CacheFixture {
    private static final String TYPE = "seg_init_net.pb";

    @AfterEach
    void stopListening() {
        SoftErrors.setListener(null);
    }

    /** Runs {@code body} on this thread while it is inside a native call of {@code call}. */
    private void inside(Executable call, Executable body) throws Throwable {
        Throwable[] failure = {new AssertionError("the call did not fail")};
        Files.write(mRoot.resolve("metadata.json"), new byte[] {'{'});
        SoftErrors.setListener((file, function, line, severity, category, message) -> {
            SoftErrors.setListener(null);
            try {
                Files.delete(mRoot.resolve("metadata.json"));
                body.execute();
                failure[0] = null;
            } catch (Throwable thrown) {
                failure[0] = thrown;
            }
        });
        call.execute();
        if (failure[0] != null) {
            throw failure[0];
        }
    }

    private static Throwable onAnotherThread(Executable call) {
        return CompletableFuture.supplyAsync(() -> {
            try {
                call.execute();
                return null;
            } catch (Throwable thrown) {
                return thrown;
            }
        }).join();
    }

    @Test
    void aSecondThreadIsToldAndTheFirstGoesOn() throws Throwable {
        Files.createFile(mRoot.resolve("key"));
        SegmentationModelCache models = new SegmentationModelCache(mCache);
        List<Executable> calls = Arrays.asList(() -> mCache.commit("key"), mCache::getSize,
                () -> models.getInitNetPath(1), () -> models.addModelForVersionIfInCache(1, "key", TYPE));
        for (Executable first : calls) {
            inside(first, () -> {
                for (Executable second : calls) {
                    Throwable thrown = onAnotherThread(second);
                    assertEquals(IllegalStateException.class, thrown.getClass());
                    assertTrue(thrown.getMessage().contains("is in use by another thread"));
                    second.execute();
                }
                assertNull(onAnotherThread(() -> new FileCacheBasicImpl(mRoot + "/", 1).getSize()));
                assertEquals(IllegalStateException.class, onAnotherThread(mCache::getSize).getClass());
            });
            assertNull(onAnotherThread(mCache::getSize));
        }
    }

    @Test
    void closingIsSafeWhoeverIsInside() throws Throwable {
        inside(() -> mCache.remove("key"), mCache::close);
        assertThrows(NullPointerException.class, mCache::getSize);
        ExecutorService threads = Executors.newFixedThreadPool(3);
        for (int round = 0; round < 300; ++round) {
            openNewCache();
            SegmentationModelCache models = new SegmentationModelCache(mCache);
            FileCacheBasicImpl cache = mCache;
            List<Callable<Object>> tasks = new ArrayList<>();
            for (Executable call : Arrays.<Executable>asList(() -> cache.getCacheEntry("key"),
                    () -> models.getInitNetPath(1), () -> new SegmentationModelCache(cache).close())) {
                tasks.add(() -> {
                    for (int i = 0; ; ++i) {
                        try {
                            if (i == 20) {
                                models.close();
                                cache.close();
                            }
                            call.execute();
                        } catch (IllegalStateException inUse) {
                            continue;
                        } catch (NullPointerException closed) {
                            return null;
                        } catch (Throwable thrown) {
                            throw new AssertionError(thrown);
                        }
                    }
                });
            }
            for (Future<Object> done : threads.invokeAll(tasks)) {
                done.get();
            }
        }
        threads.shutdown();
        openNewCache();
        assertEquals(0, mCache.getSize());
        assertTrue(new String(Files.readAllBytes(put("key", 1).resolveSibling("metadata.json")))
                .startsWith("{\"entries\":[{\"key\":\"key\","));
    }
}
