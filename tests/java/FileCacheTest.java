import static org.junit.jupiter.api.Assertions.*;

import com.lumora.camera.effect.qv.modelcache.FileCacheBasicImpl;
import com.zentrel.vistabase.assets.tesselcache.ARDFileResourceMeta;
import java.nio.ByteBuffer;
import java.nio.file.*;
import java.util.*;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.*;

class FileCacheTest extends CacheFixture {
    private static final byte[] BYTES = {0, -1, 127, -128, 0};

    @Test
    void anEntryLivesUntilItIsRemoved() throws Exception {
        assertFalse(mCache.remove("model"));
        assertFalse(mCache.updateExtra("model", BYTES));
        assertNull(mCache.getCacheEntry("model"));
        assertNull(mCache.getCacheEntryWithoutPromotion("model"));
        assertEquals(0, mCache.getAllMetas().length);
        Path path = put("model", 1);
        Files.write(path, BYTES);
        mCache.commit("model");
        mCache = new FileCacheBasicImpl(mRoot.toString(), 10);
        assertEquals(path.toString(), mCache.getCacheEntry("model").getPath());
        assertEquals(path.toString(), mCache.getCacheEntryWithoutPromotion("model").getPath());
        assertArrayEquals(BYTES, Files.readAllBytes(path));
        assertEquals(5, mCache.getSize());
        for (byte[] extra : new byte[][] {BYTES, {}, new byte[100_000]}) {
            assertTrue(mCache.updateExtra("model", extra));
            ByteBuffer buffer = mCache.getAllMetas()[0].getValue().getExtra();
            assertTrue(buffer.isDirect());
            assertEquals(ByteBuffer.wrap(extra), buffer);
        }
        assertTrue(mCache.remove("model"));
        assertFalse(Files.exists(path) || Files.exists(mRoot.resolve("extra/model")));
        assertEquals(0, mCache.getSize());
        assertEquals(mRoot.resolve("a%/b"), put("a/b", 5));
    }

    @Test
    void buffersOfManyMetasOutliveThem() throws Exception {
        Files.createDirectory(mRoot.resolve("extra"));
        for (int i = 0; i < 10_000; ++i) {
            Files.createFile(mRoot.resolve("key " + i));
            Files.write(mRoot.resolve("extra/key " + i), ("extra of key " + i).getBytes());
        }
        Map<String, ByteBuffer> buffers = new HashMap<>();
        for (Map.Entry<String, ARDFileResourceMeta> meta : mCache.getAllMetas()) {
            buffers.put(meta.getKey(), meta.getValue().getExtra());
            meta.getValue().release();
        }
        System.gc();
        assertEquals(10_000, buffers.size());
        buffers.forEach((key, extra) ->
                assertEquals(ByteBuffer.wrap(("extra of " + key).getBytes()), extra));
    }

    @Test
    void whatWasNotLookedUpIsEvicted() throws Exception {
        Path big = Files.createFile(mRoot.resolve("big"));
        Files.write(mRoot.resolve("metadata.json"), Collections.singleton(
                "{\"entries\":[{\"key\":\"big\",\"size\":7000000001,\"lastAccess\":1}]}"));
        mCache = new FileCacheBasicImpl(mRoot.toString(), 7_000_000_002L);
        Path small = put("small", 1);
        assertEquals(7_000_000_002L, mCache.getSize(), "the budget is just kept");
        mCache.getCacheEntry("small");
        Files.write(small, new byte[2]);
        mCache.commit("small");
        assertFalse(Files.exists(big));
        assertTrue(Files.exists(small));
    }

    @ParameterizedTest
    @CsvSource(delimiter = ' ', quoteCharacter = '`', value = {
        "\uD83D\uDE00.bin \uD83D\uDE00.bin",
        "größe模型50% größe模型50%",
        "\"*:<>?|\\.bin %\"%*%:%<%>%?%|%\\.bin",
        "lone\uD800 lone\uD800",
    })
    void aKeyNamesItsFile(String key, String name) throws Exception {
        if (key.startsWith("lone")) { // Java itself cannot name this file.
            String[] create = {"sh", "-c", "printf 7_bytes > $(printf 'lone\\355\\240\\200')"};
            assertEquals(0, new ProcessBuilder(create).directory(mRoot.toFile()).start().waitFor());
            mCache.commit(key);
        } else {
            put(key, 7);
        }
        assertEquals(7, mCache.getSize());
        assertEquals(mRoot + "/" + name, mCache.getCacheEntry(key).getPath());
        assertTrue(mCache.updateExtra(key, BYTES));
        assertEquals(name, mCache.getAllMetas()[0].getKey());
    }

    @ParameterizedTest
    @ValueSource(strings = {"new/root/metadata.json", "new/root", "not the root"})
    void aBrokenRootGivesNeutralResults(String damaged) throws Exception {
        Path file = put("model", 5);
        assertTrue(mCache.updateExtra("model", BYTES));
        boolean isThere = damaged.endsWith("metadata.json");
        if (!isThere) {
            mCache.clear();
        }
        Files.write(mFolder.resolve(damaged), BYTES);
        assertNull(mCache.insertAndLock("model"));
        assertNull(mCache.getCacheEntry("model"));
        assertEquals(isThere, mCache.getCacheEntryWithoutPromotion("model") != null);
        assertFalse(mCache.updateExtra("model", BYTES));
        assertEquals(0, mCache.getAllMetas().length);
        mCache.commit("model");
        mCache.unlock("model");
        assertFalse(mCache.remove("model"));
        assertEquals(0, mCache.getSize());
        mCache.flush();
        mCache.clear();
        assertArrayEquals(BYTES, Files.readAllBytes(mFolder.resolve(damaged)));
        assertEquals(isThere, Files.exists(file) && Files.exists(mRoot.resolve("extra/model")));
        assertEquals(isThere, mCache.recoverMetadata());
        if (isThere) { // The newest is kept.
            Files.write(mRoot.resolve("metadata.json"), new byte[] {'{'});
            assertTrue(mCache.recoverMetadata());
            assertEquals(1, Files.size(mRoot.resolve(".metadata.json.damaged")));
        }
        assertFalse(mCache.recoverMetadata());
        assertEquals(isThere, Files.exists(mRoot.resolve(".metadata.json.damaged")));
        assertEquals(isThere ? 5 : 0, mCache.getSize());
        mCache.close();
        assertThrows(NullPointerException.class, mCache::recoverMetadata);
    }

    @ParameterizedTest
    @ValueSource(strings = {"", ".", "..", "a/..", "\0", "model\0", "metadata.json", "extra"})
    void aKeyThatIsNotForAFileIsRefused(String key) throws Exception {
        Path file = put("model", 5);
        mCache.updateExtra("model", BYTES);
        assertNull(mCache.insertAndLock(key));
        assertNull(mCache.getCacheEntry(key));
        assertNull(mCache.getCacheEntryWithoutPromotion(key));
        assertFalse(mCache.remove(key));
        assertFalse(mCache.updateExtra(key, BYTES));
        mCache.commit(key);
        mCache.unlock(key);
        assertTrue(Files.exists(file) && Files.exists(mRoot.resolve("extra/model")));
        assertEquals(5, mCache.getSize());
    }
}
