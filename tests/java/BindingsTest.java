import static java.util.stream.Collectors.toList;
import static org.junit.jupiter.api.Assertions.*;

import com.lumora.camera.effect.qv.modelcache.FileCacheBasicImpl;
import com.zentrel.jni.*;
import com.zentrel.nexboot.MergedSoMapping;
import com.zentrel.vistabase.assets.modelcache.facetracker.FacetrackerModelCache;
import com.zentrel.vistabase.assets.modelcache.segmentation.SegmentationModelCache;
import com.zentrel.vistabase.assets.tesselcache.*;
import java.lang.reflect.*;
import java.nio.file.*;
import java.util.*;
import java.util.stream.Stream;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.*;

class BindingsTest extends CacheFixture {
    private Object mModels;

    @ParameterizedTest
    @CsvSource({
        "facetracker, face_tracker_model.bin face_detector_model.bin features_model.bin"
                + " pdm_multires.bin, getFaceAlign getFaceDetect getFaceContour getMesh",
        "segmentation, seg_init_net.pb seg_predict_net.pb, getInitNet getPredictNet",
    })
    void aVersionHasPathsFromItsLastFileUntilItIsTrimmed(
            String capability, String types, String getters) throws Exception {
        mCache = new FileCacheBasicImpl(mRoot.toString(), 1L << 40);
        openModels(capability);
        List<String> none = Collections.nCopies(types.split(" ").length, "");
        List<String> oldPaths = new ArrayList<>();
        for (String type : types.split(" ")) {
            assertEquals(none, paths(getters, 1));
            assertEquals(false, call("add", 1, type, type));
            oldPaths.add(put(type, 1).toString());
            assertEquals(true, call("add", 1, type, type));
            call("add", -2, type, type);
        }
        List<String> newPaths = new ArrayList<>(oldPaths);
        newPaths.set(0, put("new", 1).toString());
        call("add", -2, "new", types.split(" ")[0]);
        assertTrue(mCache.remove("new"));
        assertEquals(none, paths(getters, -2));
        put("new", 1);
        openModels(capability);
        call("trim", 7);
        assertEquals(oldPaths, paths(getters, 1));
        call("trim", -2);
        assertEquals(none, paths(getters, 1));
        assertFalse(Files.exists(Paths.get(oldPaths.get(0))));
        mCache.release();
        assertEquals(newPaths, paths(getters, -2));
        assertEquals("com.zentrel.vistabase.common.exception.EffectsFrameworkException: "
                + "Failed to add " + capability + " models: Unknown serialized type: \uD83D\uDE00",
                failureOf(mModels, method("add"), 1, "new", "\uD83D\uDE00"));
    }

    @ParameterizedTest
    @CsvSource({
        "facetracker, getFaceAlign, Failed to get face align path: Could not query entries",
        "facetracker, getFaceDetect, Failed to get face detect path: Could not query entries",
        "facetracker, getFaceContour, Failed to get face align path: Could not query entries",
        "facetracker, getMesh, Failed to get mesh path: Could not query entries",
        "facetracker, add, Failed to add facetracker models: Could not add model into the cache",
        "facetracker, trim, Failed to trim cache: Could not query versions",
        "segmentation, getInitNet, Failed to get init net path: Could not query entries",
        "segmentation, getPredictNet, Failed to get predict net path: Could not query entries",
        "segmentation, add, Failed to add segmentation models: Could not add model into the cache",
        "segmentation, trim, Failed to trim segmentation models: Could not query versions",
    })
    void aDamagedIndexFailsUntilItIsMended(String capability, String name, String prefix)
            throws Exception {
        openModels(capability);
        Path index = mRoot.resolve("versioned_index");
        Files.write(index, "{\"versions\" \u00F0\u009F\u0098\u0080\u00FF".getBytes("ISO-8859-1"));
        String type = capability.equals("facetracker") ? "pdm_multires.bin" : "seg_init_net.pb";
        Object[] arguments = name.equals("add") ? new Object[] {1, "key", type} : new Object[] {1};
        String failure = failureOf(mModels, method(name), arguments);
        assertTrue(failure.contains(".EffectsFrameworkException: " + prefix + ": Deserializing "
                + "failed: '{\"versions\" \uD83D\uDE00\uFFFD' with exception: "), failure);
        Files.write(index, new byte[0]);
        call(name, arguments);
    }

    static Stream<Method> natives() {
        return Stream.of(FileCacheBasicImpl.class, ARDFileResourceMeta.class,
                        FacetrackerModelCache.class, SegmentationModelCache.class)
                .flatMap(type -> Stream.of(type.getDeclaredMethods()))
                .filter(method -> Modifier.isNative(method.getModifiers()));
    }

    @ParameterizedTest
    @MethodSource("natives")
    void everyNativeRefusesBadReferences(Method method) throws Exception {
        put("key", 1);
        mCache.updateExtra("key", new byte[1]);
        // Static natives use the peer of the file cache that they take, if any.
        Class<?> owner = Modifier.isStatic(method.getModifiers())
                ? ARDFileCache.class : method.getDeclaringClass();
        HybridClassBase object = Stream.of(mCache, mCache.getAllMetas()[0].getValue(),
                        new FacetrackerModelCache(mCache), new SegmentationModelCache(mCache))
                .filter(owner::isInstance).findFirst().get();
        List<Class<?>> types = Arrays.asList(method.getParameterTypes());
        Object[] good = types.stream().map(type -> type == String.class ? "key"
                : type == byte[].class ? new byte[1]
                : type == ARDFileCache.class ? mCache : (Object) 1).toArray();
        String[] names = (types.contains(ARDFileCache.class) ? "fileCache"
                : types.contains(long.class) ? "rootPath maxSizeBytes"
                : types.contains(int.class) ? "version cacheKey typeName" : "key extra").split(" ");
        for (int i = 0; i < good.length; ++i) {
            Object[] arguments = good.clone();
            arguments[i] = null;
            if (!types.get(i).isPrimitive()) {
                assertEquals("java.lang.NullPointerException: " + names[i] + " must not be null",
                        failureOf(object, method, arguments));
            }
        }
        assertEquals(1, mCache.getSize());
        object.release();
        object.release();
        object.close();
        if (!types.contains(long.class)) {
            assertEquals("java.lang.NullPointerException: java.lang.NullPointerException",
                    failureOf(object, method, good));
            openNewCache();
            HybridData foreign = object instanceof FacetrackerModelCache
                    ? SegmentationModelCache.initHybrid(mCache)
                    : FacetrackerModelCache.initHybrid(mCache);
            field(HybridClassBase.class, "mHybridData").set(object, foreign);
            assertTrue(failureOf(object, method, good).startsWith("java.lang.IllegalArgument"));
            foreign.release();
            assertTrue(failureOf(object, method, good).startsWith("java.lang.NullPointer"));
        }
    }

    @Test
    void unreleasedPeersAreFreedAfterCollection() throws Exception {
        HybridData first = FileCacheBasicImpl.initHybrid(mRoot.toString(), 1);
        Object destructor = field(HybridData.class, "mDestructor").get(first);
        Field pointer = field(destructor.getClass(), "mNativePointer");
        Set<?> pending = (Set<?>) field(destructor.getClass(), "PENDING").get(null);
        List<Object> dropped = new ArrayList<>(pending);
        assertNotEquals(0, pointer.getLong(destructor));
        for (int i = 0; i < 10_000; ++i) {
            FileCacheBasicImpl.initHybrid(mRoot.toString(), 1);
        }
        first = null;
        for (int i = 0; i < 1000 && pending.size() > dropped.size(); ++i) {
            System.gc();
            Thread.sleep(5);
        }
        assertTrue(pending.size() <= dropped.size());
        for (int i = 0; i < 1000 && pending.contains(destructor); ++i) {
            System.gc();
            Thread.sleep(5);
        }
        synchronized (destructor) {
            assertEquals(0, pointer.getLong(destructor));
        }
    }

    @Test
    void releasedPeersGiveTheirMemoryBack() throws Exception {
        put("key", 1);
        mCache.updateExtra("key", new byte[1 << 20]);
        long before = residentPages();
        for (int i = 0; i < 2000; ++i) {
            mCache.getAllMetas()[0].getValue().release();
        }
        assertTrue(residentPages() - before < 1 << 18, "a gigabyte of two that went through");
    }

    private static long residentPages() throws Exception {
        String statm = new String(Files.readAllBytes(Paths.get("/proc/self/statm")));
        return Long.parseLong(statm.split(" ")[1]);
    }

    @Test
    void aRootThatSystemCallsWouldMisreadIsRefused() {
        for (String root : new String[] {"", mRoot + "\0x"}) {
            assertThrows(IllegalArgumentException.class, () -> new FileCacheBasicImpl(root, 1));
        }
    }

    @Test
    void aMissingManagedClassLeavesTheMachineUsable() throws Exception {
        String entryClass = "com/zentrel/vistabase/assets/tesselcache/ARDFileCacheEntry.class";
        List<String> paths = Arrays.asList(System.getProperty("java.class.path").split(":"));
        Path jar = mFolder.resolve("modelcache.jar");
        Files.copy(Paths.get(paths.stream().filter(p -> p.endsWith("modelcache.jar"))
                .findFirst().get()), jar);
        try (FileSystem zip = FileSystems.newFileSystem(jar, (ClassLoader) null)) {
            Files.delete(zip.getPath(entryClass));
        }
        String rest = paths.stream().filter(p -> !p.endsWith("modelcache.jar"))
                .reduce(jar.toString(), (left, right) -> left + ":" + right);
        Process process = new ProcessBuilder(System.getProperty("java.home") + "/bin/java",
                "-Xcheck:jni", "-Djava.library.path=" + System.getProperty("java.library.path"),
                "-cp", rest, "BindingsTest", mRoot.toString()).redirectErrorStream(true).start();
        byte[] output = new byte[10_000];
        int length = process.getInputStream().read(output);
        assertEquals("still usable\n", new String(output, 0, Math.max(0, length)));
        assertEquals(0, process.waitFor());
    }

    /** What runs where the class of entries is missing. */
    public static void main(String[] arguments) {
        FileCacheBasicImpl cache = new FileCacheBasicImpl(arguments[0], 10);
        for (int i = 0; i < 3; ++i) {
            assertThrows(NoClassDefFoundError.class, () -> cache.insertAndLock("key"));
        }
        assertEquals(0, cache.getSize());
        System.out.println("still usable");
    }

    @Test
    void onlyMergedLibrariesLoad() {
        MergedSoMapping.load("libardcache-jni.so");
        MergedSoMapping.load("libardcache-jni.so");
        assertThrows(UnsatisfiedLinkError.class, () -> MergedSoMapping.load("libardcache-jni"));
    }

    private void openModels(String capability) {
        mModels = capability.equals("facetracker")
                ? new FacetrackerModelCache(mCache) : new SegmentationModelCache(mCache);
    }

    private List<Object> paths(String getters, int version) {
        return Stream.of(getters.split(" ")).map(getter -> call(getter, version)).collect(toList());
    }

    private Object call(String name, Object... arguments) {
        return assertDoesNotThrow(() -> method(name).invoke(mModels, arguments));
    }

    private Method method(String name) {
        return Stream.of(mModels.getClass().getDeclaredMethods())
                .filter(candidate -> candidate.getName().startsWith(name)).findFirst().get();
    }

    /** Class and message of what the method throws. */
    private static String failureOf(Object target, Method method, Object... arguments) {
        return assertThrows(InvocationTargetException.class,
                () -> method.invoke(target, arguments)).getCause().toString();
    }

    private static Field field(Class<?> type, String name) throws Exception {
        Field field = type.getDeclaredField(name);
        field.setAccessible(true);
        return field;
    }
}
