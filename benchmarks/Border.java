import com.lumora.camera.effect.qv.modelcache.FileCacheBasicImpl;
import java.util.Arrays;

/**
 * {@code Border ROOT ROUNDS}: what a call from Java costs beyond the same native call, by a cheap
 * one, the look-up of an absent key. Prints the medians of both, in nanoseconds per call, from
 * rounds that take turns.
 */
public final class Border {
    private static final int CALLS = 20_000;
    private static final String KEY = "an_absent_model_0001";

    private Border() {}

    public static void main(String[] arguments) {
        System.loadLibrary("modelcache_bench_border");
        int rounds = Integer.parseInt(arguments[1]);
        double[] managed = new double[rounds];
        double[] plain = new double[rounds];
        try (FileCacheBasicImpl cache = new FileCacheBasicImpl(arguments[0], 1)) {
            lookUps(cache); // Until the compiler has done its work.
            lookUps(cache);
            for (int i = 0; i < rounds; ++i) {
                managed[i] = (double) lookUps(cache) / CALLS;
                plain[i] = (double) nativeLookUps(arguments[0], KEY, CALLS) / CALLS;
            }
        }
        System.out.println(median(managed) + " " + median(plain));
    }

    private static long lookUps(FileCacheBasicImpl cache) {
        long start = System.nanoTime();
        for (int i = 0; i < CALLS; ++i) {
            if (cache.getCacheEntryWithoutPromotion(KEY) != null) {
                throw new IllegalStateException(KEY + " is there");
            }
        }
        return System.nanoTime() - start;
    }

    private static double median(double[] values) {
        Arrays.sort(values);
        return values[values.length / 2];
    }

    private static native long nativeLookUps(String root, String key, int calls);
}
