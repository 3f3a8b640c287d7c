import static org.junit.jupiter.api.Assertions.*;

import com.lumora.camera.effect.qv.modelcache.*;
import com.zentrel.vistabase.assets.modelcache.segmentation.SegmentationModelCache;
import java.nio.file.*;
import java.util.*;
import java.util.concurrent.*;
import java.util.function.Supplier;
import java.util.stream.IntStream;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.function.Executable;

class RawThreadsTest extends CacheFixture {
    /** Runs {@code body} on this thread while it is inside a native call of {@code call}. */
    private void inside(Executable call, Executable body) throws Throwable {
        CompletableFuture<Void> inside = new CompletableFuture<>();
        Files.write(mRoot.resolve("metadata.json"), new byte[] {'{'});
        SoftErrors.setListener((file, function, line, severity, category, message) -> {
            SoftErrors.setListener(null);
            try {
                Files.delete(mRoot.resolve("metadata.json"));
                body.execute();
                inside.complete(null);
            } catch (Throwable thrown) {
                inside.completeExceptionally(thrown);
            }
        });
        call.execute();
        assertTrue(inside.isDone(), "the call did not fail");
        inside.join();
    }

    private static <T> T onAnotherThread(Supplier<T> call) {
        return CompletableFuture.supplyAsync(call).join();
    }

    @Test
    void aCallFromASecondThreadIsRefusedWhileTheFirstGoesOn() throws Throwable {
        Files.createFile(mRoot.resolve("key"));
        SegmentationModelCache models = new SegmentationModelCache(mCache);
        List<Executable> calls = Arrays.asList(() -> mCache.commit("key"), mCache::getSize,
                () -> models.getInitNetPath(1),
                () -> models.addModelForVersionIfInCache(1, "key", "seg_init_net.pb"));
        for (Executable first : calls) {
            inside(first, () -> {
                for (Executable second : calls) {
                    String message = onAnotherThread(() ->
                            assertThrows(IllegalStateException.class, second).getMessage());
                    assertTrue(message.contains("is in use by another thread"));
                    second.execute();
                }
                onAnotherThread(() -> new FileCacheBasicImpl(mRoot + "/", 1).getSize());
            });
            onAnotherThread(mCache::getSize);
        }
    }

    @Test
    void closingIsSafeDuringCallsOfOtherThreads() throws Throwable {
        inside(() -> mCache.remove("key"), mCache::close);
        assertThrows(NullPointerException.class, mCache::getSize);
        for (int round = 0; round < 300; ++round) {
            openNewCache();
            FileCacheBasicImpl files = mCache;
            SegmentationModelCache models = new SegmentationModelCache(files);
            Executable[] calls = {() -> files.getCacheEntry("key"), () -> models.getInitNetPath(1),
                () -> new SegmentationModelCache(files).close(), files::close, models::close};
            IntStream.range(0, 100).parallel().forEach(i -> {
                try {
                    calls[i % 50 < 48 ? i % 3 : i % 50 - 45].execute();
                } catch (IllegalStateException | NullPointerException inUseOrClosed) {
                    return;
                } catch (Throwable thrown) {
                    throw new AssertionError(thrown);
                }
            });
        }
    }
}
