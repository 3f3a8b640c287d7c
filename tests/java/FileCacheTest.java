import static org.junit.jupiter.api.Assertions.*;

import com.lumora.camera.effect.qv.modelcache.FileCacheBasicImpl;
import com.zentrel.vistabase.assets.tesselcache.ARDFileResourceMeta;
import java.nio.ByteBuffer;
import java.nio.file.*;
import java.util.*;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.CsvSource;

class FileCacheTest extends CacheFixture {
    private static final byte[] BYTES = {0, -1, 127, -128, 0};

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

    @ParameterizedTest
    @CsvSource(delimiter = ' ', quoteCharacter = '`', value = {
        "\uD83D\uDE00.bin \uD83D\uDE00.bin",
        "größe模型50% größe模型50%",
        "\"*:<>?|/\\.bin %\"%*%:%<%>%?%|%/%\\.bin",
    })
    void aKeyNamesItsFile(String key, String name) throws Exception {
        assertEquals(mRoot + "/" + name, mCache.insertAndLock(key).getPath());
        put(key, 7);
        assertEquals(mRoot + "/" + name, mCache.getCacheEntry(key).getPath());
        assertEquals(mRoot + "/" + name, mCache.getCacheEntryWithoutPromotion(key).getPath());
        for (byte[] extra : name.contains("/") ? new byte[0][] : new byte[][] {BYTES, {}}) {
            assertTrue(mCache.updateExtra(key, extra));
            Map.Entry<String, ARDFileResourceMeta> meta = mCache.getAllMetas()[0];
            assertEquals(name, meta.getKey());
            assertTrue(meta.getValue().getExtra().isDirect());
            assertEquals(ByteBuffer.wrap(extra), meta.getValue().getExtra());
        }
        assertTrue(mCache.remove(key));
        assertNull(mCache.getCacheEntry(key));
        assertNull(mCache.getCacheEntryWithoutPromotion(key));
    }

    @Test
    void damagedMetadataGivesNeutralResultsUntilItIsSetAside() throws Exception {
        put("model", 5);
        assertFalse(mCache.recoverMetadata());
        Files.write(mRoot.resolve("metadata.json"), new byte[1]);
        assertNull(mCache.insertAndLock("model"));
        assertNull(mCache.getCacheEntry("model"));
        assertFalse(mCache.updateExtra("model", BYTES));
        assertFalse(mCache.remove("gone"));
        assertEquals(0, mCache.getAllMetas().length);
        assertEquals(0, mCache.getSize());
        mCache.commit("model");
        mCache.unlock("model");
        mCache.flush();
        mCache.clear();
        assertTrue(mCache.recoverMetadata());
        assertEquals(5, mCache.getSize());
        mCache.close();
        assertThrows(NullPointerException.class, mCache::recoverMetadata);
    }
}
