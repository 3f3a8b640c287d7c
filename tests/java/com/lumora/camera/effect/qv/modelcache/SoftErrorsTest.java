package com.lumora.camera.effect.qv.modelcache;

import static org.junit.jupiter.api.Assertions.*;

import com.zentrel.vistabase.assets.modelcache.segmentation.SegmentationModelCache;
import com.zentrel.vistabase.common.exception.EffectsFrameworkException;
import java.nio.file.*;
import java.util.*;
import org.junit.jupiter.api.*;
import org.junit.jupiter.api.io.TempDir;

class SoftErrorsTest {
    @TempDir Path mRoot;

    @AfterEach
    void stopListening() {
        SoftErrors.setListener(null);
    }

    /** Fails in the file cache, which reports; and in the index, which throws. */
    private void fail(FileCacheBasicImpl files) throws Exception {
        Files.write(mRoot.resolve("metadata.json"), new byte[] {'{'});
        assertNull(files.getCacheEntry("\uD83D\uDE00"));
        assertEquals(0, files.getSize());
        Files.delete(mRoot.resolve("metadata.json"));
        Files.write(mRoot.resolve("versioned_index"), new byte[] {'{'});
        try (SegmentationModelCache models = new SegmentationModelCache(files)) {
            assertThrows(EffectsFrameworkException.class, () -> models.getInitNetPath(1));
        }
    }

    @Test
    void aListenerIsToldOnTheThreadOfTheFailure() throws Exception {
        List<String> told = new ArrayList<>();
        Thread thread = Thread.currentThread();
        try (FileCacheBasicImpl files = new FileCacheBasicImpl(mRoot.toString(), 10)) {
            SoftErrors.setListener((file, function, line, severity, category, message) -> {
                assertTrue(line > 0);
                assertSame(thread, Thread.currentThread());
                told.add(String.join("|", file, function, "" + severity, category, message));
            });
            fail(files);
        }
        String where = "delivery/FileCache/FileCacheWithErrorLogging/FileCacheWithErrorLogging|virtual ";
        String inside = " zentrel::vistabase::ardelivery::FileCacheWithErrorLogging::";
        String what = ": Deserializing failed: '{' with exception: parse error: ";
        assertEquals(2, told.size());
        assertTrue(told.get(0).startsWith(where + "std::shared_ptr<FileCacheEntry>" + inside
                + "getCacheEntry(const std::string &)|1|tessel|Error for getCacheEntry" + what));
        assertTrue(told.get(1).startsWith(where + "int64_t" + inside
                + "getSize()|1|tessel|Error for getSize" + what));
    }

    @Test
    void aListenerThatThrowsOrFailsItselfChangesNothing() throws Exception {
        try (FileCacheBasicImpl files = new FileCacheBasicImpl(mRoot.toString(), 10)) {
            int[] calls = {0};
            SoftErrors.setListener((file, function, line, severity, category, message) -> {
                assertEquals(0, files.getSize()); // which fails too, and calls nobody
                ++calls[0];
                throw new AssertionError("thrown by a listener");
            });
            fail(files);
            SoftErrors.setListener(null);
            fail(files);
            assertEquals(2, calls[0]);
        }
    }
}
