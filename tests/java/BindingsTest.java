import static java.util.stream.Collectors.toList;
import static org.junit.jupiter.api.Assertions.*;

import com.lumora.camera.effect.qv.modelcache.FileCacheBasicImpl;
import com.zentrel.jni.*;
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
    private static final String FACETRACKER = "facetracker, face_tracker_model.bin"
            + " face_detector_model.bin features_model.bin pdm_multires.bin,"
            + " getFaceAlign getFaceDetect getFaceContour getMesh";
    private static final String SEGMENTATION = "segmentation, seg_init_net.pb seg_predict_net.pb,"
            + " getInitNet getPredictNet";

    private Object mModels;

    @ParameterizedTest
    @CsvSource({FACETRACKER, SEGMENTATION})
    void aVersionHasPathsOnceAllItsFilesAreAdded(String capability, String types, String getters)
            throws Exception {
        openModels(capability);
        List<String> expected = new ArrayList<>();
        for (String type : types.split(" ")) {
            for (Object path : paths(getters, 1)) {
                assertEquals("", path);
            }
            assertEquals(false, call("add", 1, type, type));
            expected.add(put(type, 1).toString());
            assertEquals(true, call("add", 1, type, type));
            assertEquals(true, call("add", -2, type, type));
        }
        assertEquals(expected, paths(getters, 1));
        mCache.release();
        call("trim", -2); // It has a share in the file cache.
        assertEquals("", paths(getters, 1).get(0));
        assertEquals(expected, paths(getters, -2));
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
    void callsFailWhileTheIndexIsDamaged(String capability, String name, String prefix)
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
    void everyNativeNamesTheArgumentThatIsNull(Method method) throws Exception {
        List<Class<?>> types = Arrays.asList(method.getParameterTypes());
        String[] names = (types.contains(ARDFileCache.class) ? "fileCache"
                : types.contains(long.class) ? "rootPath maxSizeBytes"
                : types.contains(int.class) ? "version cacheKey typeName" : "key extra").split(" ");
        HybridClassBase object = objectOf(method);
        for (int i = 0; i < types.size(); ++i) {
            Object[] arguments = argumentsOf(method);
            arguments[i] = null;
            if (!types.get(i).isPrimitive()) {
                assertEquals("java.lang.NullPointerException: " + names[i] + " must not be null",
                        failureOf(object, method, arguments));
            }
        }
    }

    @ParameterizedTest
    @MethodSource("natives")
    void everyNativeRefusesAReleasedOrForeignPeer(Method method) throws Exception {
        if (Arrays.asList(method.getParameterTypes()).contains(long.class)) {
            return; // It uses no peer.
        }
        HybridClassBase object = objectOf(method);
        Object[] arguments = argumentsOf(method);
        for (int i = 0; i < 2; ++i) {
            object.close();
            assertEquals("java.lang.NullPointerException: java.lang.NullPointerException",
                    failureOf(object, method, arguments));
        }
        openNewCache();
        Field peer = field(HybridClassBase.class, "mHybridData");
        HybridData foreign = (HybridData) peer.get(object instanceof FacetrackerModelCache
                ? new SegmentationModelCache(mCache) : new FacetrackerModelCache(mCache));
        peer.set(object, foreign);
        assertTrue(failureOf(object, method, arguments).startsWith("java.lang.IllegalArgument"));
        foreign.release();
        assertTrue(failureOf(object, method, arguments).startsWith("java.lang.NullPointer"));
    }

    /** The object whose peer the native uses: its own, or that of the file cache that it takes. */
    private HybridClassBase objectOf(Method method) throws Exception {
        put("key", 1);
        mCache.updateExtra("key", new byte[1]);
        Class<?> owner = Modifier.isStatic(method.getModifiers())
                ? ARDFileCache.class : method.getDeclaringClass();
        return Stream.of(mCache, mCache.getAllMetas()[0].getValue(),
                        new FacetrackerModelCache(mCache), new SegmentationModelCache(mCache))
                .filter(owner::isInstance).findFirst().get();
    }

    private Object[] argumentsOf(Method method) {
        return Stream.of(method.getParameterTypes()).map(type -> type == String.class ? "key"
                : type == byte[].class ? new byte[1]
                : type == ARDFileCache.class ? mCache : (Object) 1).toArray();
    }

    @Test
    void peersThatNobodyReleasesAreFreedOnceCollected() throws Exception {
        Object peer = field(HybridClassBase.class, "mHybridData")
                .get(new FileCacheBasicImpl(mRoot.toString(), 1));
        Object destructor = field(HybridData.class, "mDestructor").get(peer);
        peer = null;
        Field pointer = field(destructor.getClass(), "mNativePointer");
        assertNotEquals(0, pointer.getLong(destructor));
        Set<?> pending = (Set<?>) field(destructor.getClass(), "PENDING").get(null);
        for (int i = 0; i < 1000 && pending.contains(destructor); ++i) {
            System.gc();
            Thread.sleep(5);
        }
        synchronized (destructor) {
            assertEquals(0, pointer.getLong(destructor));
        }
    }

    @Test
    void aRootThatIsEmptyOrHasAZeroByteIsRefused() {
        for (String root : new String[] {"", mRoot + "\0x"}) {
            assertThrows(IllegalArgumentException.class, () -> new FileCacheBasicImpl(root, 1));
        }
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
        method.setAccessible(true); // initHybrid is private
        return assertThrows(InvocationTargetException.class,
                () -> method.invoke(target, arguments)).getCause().toString();
    }

    private static Field field(Class<?> type, String name) throws Exception {
        Field field = type.getDeclaredField(name);
        field.setAccessible(true);
        return field;
    }
}
