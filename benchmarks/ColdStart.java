import com.lumora.camera.effect.qv.modelcache.Capability;
import com.lumora.camera.effect.qv.modelcache.FileCacheBasicImpl;
import com.lumora.camera.effect.qv.modelcache.ModelFile;
import com.lumora.camera.effect.qv.modelcache.ModelStore;
import com.lumora.camera.effect.qv.modelcache.ModelWriter;
import com.lumora.camera.effect.qv.modelcache.Update;
import com.sun.management.ThreadMXBean;
import com.zentrel.vistabase.assets.modelcache.facetracker.FacetrackerModelCache;
import java.io.File;
import java.io.IOException;
import java.lang.management.ManagementFactory;
import java.math.BigInteger;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Paths;
import java.security.MessageDigest;
import java.util.ArrayList;
import java.util.List;

/**
 * {@code ColdStart MODE FOLDER [memory]}: a start of an app, which the caller takes the time of. MODE
 * is {@code nothing}, as a baseline; {@code load}, the native library; {@code raw} or {@code store},
 * the four face-tracking paths from the raw classes or from a store. With {@code memory} it prints
 * the peak memory of the process in KiB.
 *
 * <p>{@code ColdStart make FOLDER} makes the store of that, of whose root FOLDER/raw has to be a
 * copy; {@code ColdStart calls FOLDER} prints what calls cost once the virtual machine is warm.
 *
 * <p>Each mode has a class of its own, so that no start loads what only another one needs.
 */
public final class ColdStart {
    private static final int VERSION = 7;

    private ColdStart() {}

    public static void main(String[] arguments) throws Exception {
        File folder = new File(arguments[1]);
        String mode = arguments[0];
        if (mode.equals("load")) {
            System.loadLibrary("modelcache");
        } else if (mode.equals("raw")) {
            Raw.run(folder);
        } else if (mode.equals("store")) {
            Store.run(folder);
        } else if (mode.equals("make")) {
            Root.make(folder);
        } else if (mode.equals("calls")) {
            Calls.run(folder);
        }
        if (arguments.length > 2) {
            Memory.print();
        }
    }

    private static void require(boolean condition) {
        if (!condition) {
            throw new IllegalStateException("there are no four paths");
        }
    }

    private static final class Raw {
        static void run(File folder) {
            try (FileCacheBasicImpl files = new FileCacheBasicImpl(folder + "/raw", 1_000_000);
                    FacetrackerModelCache models = new FacetrackerModelCache(files)) {
                require(!models.getFaceAlignPath(VERSION).isEmpty()
                        && !models.getFaceDetectPath(VERSION).isEmpty()
                        && !models.getFaceContourPath(VERSION).isEmpty()
                        && !models.getMeshPath(VERSION).isEmpty());
            }
        }
    }

    private static final class Store {
        static ModelStore open(File folder) throws IOException {
            return ModelStore.open(new File(folder, "store"), Capability.FACE_TRACKING, 1_000_000);
        }

        static void run(File folder) throws IOException {
            try (ModelStore store = open(folder)) {
                require(store.paths().size() == 4);
            }
        }
    }

    private static final class Memory {
        static void print() throws IOException {
            for (String line : Files.readAllLines(Paths.get("/proc/self/status"))) {
                if (line.startsWith("VmHWM:")) {
                    System.out.println(line.replaceAll("[^0-9]", ""));
                }
            }
        }
    }

    /** A version of four small files. */
    private static final class Root {
        static void make(File folder) throws Exception {
            List<ModelFile> models = new ArrayList<>();
            for (String type : Capability.FACE_TRACKING.types()) {
                byte[] digest = MessageDigest.getInstance("SHA-256").digest(bytes(type));
                models.add(new ModelFile(type, bytes(type).length,
                        String.format("%064x", new BigInteger(1, digest))));
            }
            try (ModelStore store = Store.open(folder);
                    Update update = store.begin(VERSION, models)) {
                for (ModelFile model : update.missing()) {
                    try (ModelWriter out = update.write(model)) {
                        out.write(bytes(model.type()));
                        out.commit();
                    }
                }
                update.activate();
            }
        }

        private static byte[] bytes(String type) {
            return type.getBytes(StandardCharsets.UTF_8);
        }
    }

    /** A line for each call: its name, nanoseconds, and bytes allocated, the best of some rounds. */
    private static final class Calls {
        private static final int ROUNDS = 40;

        static void run(File folder) throws IOException {
            try (ModelStore store = Store.open(folder);
                    FileCacheBasicImpl files = new FileCacheBasicImpl(folder + "/raw", 1_000_000)) {
                String key = "versioned_index";
                print("paths()", 1_000_000, () -> require(store.paths().size() == 4));
                print("flush()", 1_000_000, () -> files.flush());
                print("getCacheEntryWithoutPromotion()", 20_000,
                        () -> require(files.getCacheEntryWithoutPromotion(key) != null));
            }
        }

        private static void print(String name, int times, Runnable call) {
            ThreadMXBean thread = (ThreadMXBean) ManagementFactory.getThreadMXBean();
            long id = Thread.currentThread().getId();
            double nanoseconds = Double.MAX_VALUE;
            double bytes = Double.MAX_VALUE;
            for (int round = 0; round < ROUNDS; ++round) {
                long allocated = thread.getThreadAllocatedBytes(id);
                long start = System.nanoTime();
                for (int i = 0; i < times; ++i) {
                    call.run();
                }
                nanoseconds = Math.min(nanoseconds, (double) (System.nanoTime() - start) / times);
                allocated = thread.getThreadAllocatedBytes(id) - allocated;
                bytes = Math.min(bytes, (double) allocated / times);
            }
            System.out.printf("call\t%s\t%.1f\t%.1f%n", name, nanoseconds, bytes);
        }
    }
}
