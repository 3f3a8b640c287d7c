import com.lumora.camera.effect.qv.modelcache.FileCacheBasicImpl;
import com.zentrel.vistabase.assets.modelcache.facetracker.FacetrackerModelCache;

/**
 * {@code ColdStart [ROOT]}: asks for the four face-tracking paths. Without arguments it does
 * nothing, as a baseline.
 */
public final class ColdStart {
    private static final int VERSION = 7;

    private ColdStart() {}

    public static void main(String[] arguments) {
        if (arguments.length == 0) {
            return;
        }
        try (FileCacheBasicImpl files = new FileCacheBasicImpl(arguments[0], Long.MAX_VALUE);
                FacetrackerModelCache models = new FacetrackerModelCache(files)) {
            if (models.getFaceAlignPath(VERSION).isEmpty()
                    || models.getFaceDetectPath(VERSION).isEmpty()
                    || models.getFaceContourPath(VERSION).isEmpty()
                    || models.getMeshPath(VERSION).isEmpty()) {
                throw new IllegalStateException("there are no four paths below " + arguments[0]);
            }
        }
    }
}
