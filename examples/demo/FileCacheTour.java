import com.lumora.camera.effect.qv.modelcache.FileCacheBasicImpl;
import com.zentrel.vistabase.assets.tesselcache.ARDFileCacheEntry;
import com.zentrel.vistabase.assets.tesselcache.ARDFileResourceMeta;
import java.io.File;
import java.io.FileOutputStream;
import java.io.IOException;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Path;
import java.nio.file.StandardCopyOption;
import java.util.List;
import java.util.Map;

/** Takes files through every operation of the raw file cache. */
final class FileCacheTour {
    private final Path mRoot;
    private final List<File> mFiles;

    FileCacheTour(Path folder, List<File> files) {
        mRoot = folder.resolve("filecache");
        mFiles = files;
    }

    void run() throws IOException, InterruptedException {
        long budget = mFiles.stream().mapToLong(File::length).sum();
        Show.chapter("The raw file cache, with a budget of " + budget + " bytes");
        try (FileCacheBasicImpl cache = new FileCacheBasicImpl(mRoot.toString(), budget)) {
            Show.step("Put files in");
            for (int i = 0; i < mFiles.size(); ++i) {
                put(cache, mFiles.get(i), key(i));
            }
            String first = key(0);
            lookUp(cache, first);
            attachExtraBytes(cache, first);
            exceedBudget(cache);
            remove(cache, first);
        }
        Show.step("What is on disk");
        Show.tree(mRoot);
        Show.note("");
        Show.note("metadata.json:");
        Show.text(mRoot.resolve("metadata.json"));
    }

    /** Writes a file into the cache, and looks it up before older files can outrank it. */
    static void put(FileCacheBasicImpl cache, File file, String key)
            throws IOException, InterruptedException {
        ARDFileCacheEntry entry = cache.insertAndLock(key);
        Show.call("insertAndLock(\"" + key + "\")", entry);
        // Whatever is at the entry's path is the entry: only move a complete file there.
        File written = new File(entry.getPath());
        File part = new File(written.getParent(), ".part-" + written.getName());
        try (FileOutputStream out = new FileOutputStream(part)) {
            Files.copy(file.toPath(), out);
            out.getFD().sync();
        }
        Files.move(part.toPath(), written.toPath(), StandardCopyOption.ATOMIC_MOVE);
        Show.note("wrote " + file.length() + " bytes there");
        // A new file ranks as the oldest until it is looked up: do that before commit evicts.
        cache.getCacheEntry(key);
        cache.commit(key);
        cache.unlock(key);
        Show.call("getCacheEntry, commit, unlock; getSize()", cache.getSize());
        Thread.sleep(2); // Access times count milliseconds: let each be later than the last.
    }

    private static void lookUp(FileCacheBasicImpl cache, String key) {
        Show.step("Look files up");
        Show.call("getCacheEntry(\"" + key + "\")", cache.getCacheEntry(key));
        Show.call("getCacheEntryWithoutPromotion(\"no such key\")",
                cache.getCacheEntryWithoutPromotion("no such key"));
    }

    private static void attachExtraBytes(FileCacheBasicImpl cache, String key) {
        Show.step("Attach extra bytes");
        byte[] extra = "{\"etag\":\"33a64df5\"}".getBytes(StandardCharsets.UTF_8);
        Show.call("updateExtra(\"" + key + "\", " + extra.length + " bytes)",
                cache.updateExtra(key, extra));
        for (Map.Entry<String, ARDFileResourceMeta> meta : cache.getAllMetas()) {
            try (ARDFileResourceMeta open = meta.getValue()) { // It holds native memory.
                Show.call("getAllMetas()", meta.getKey() + ": "
                        + StandardCharsets.UTF_8.decode(open.getExtra()));
            }
        }
    }

    private void exceedBudget(FileCacheBasicImpl cache) throws IOException, InterruptedException {
        Show.step("Exceed the budget: the least recently used file goes");
        File again = mFiles.get(0);
        put(cache, again, "one_more.bin");
        for (int i = 0; i < mFiles.size(); ++i) {
            boolean cached = cache.getCacheEntryWithoutPromotion(key(i)) != null;
            Show.note(key(i) + (cached ? " is still there" : " was evicted"));
        }
    }

    /** The numbers keep files of one name apart. */
    private String key(int i) {
        return (i + 1) + "-" + mFiles.get(i).getName();
    }

    private static void remove(FileCacheBasicImpl cache, String key) {
        Show.step("Remove a file, with its extra bytes");
        Show.call("remove(\"" + key + "\")", cache.remove(key));
        Show.call("remove(\"" + key + "\")", cache.remove(key));
    }
}
