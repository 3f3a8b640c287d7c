import com.lumora.camera.effect.qv.modelcache.FileCacheBasicImpl;
import java.nio.file.*;
import org.junit.jupiter.api.BeforeEach;
import org.junit.jupiter.api.io.TempDir;

abstract class CacheFixture {
    @TempDir Path mFolder;
    Path mRoot;
    FileCacheBasicImpl mCache;

    @BeforeEach
    void openNewCache() {
        mRoot = mFolder.resolve("new/root");
        mCache = new FileCacheBasicImpl(mRoot.toString(), 1L << 40);
    }

    /** Takes a file of that many bytes through a writer's calls. */
    Path put(String key, int size) throws Exception {
        Path path = Paths.get(mCache.insertAndLock(key).getPath());
        Files.createDirectories(path.getParent());
        Files.write(path, new byte[size]);
        mCache.commit(key);
        mCache.unlock(key);
        return path;
    }
}
