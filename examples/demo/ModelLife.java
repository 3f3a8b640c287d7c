import com.lumora.camera.effect.qv.modelcache.FileCacheBasicImpl;
import com.zentrel.vistabase.assets.modelcache.facetracker.FacetrackerModelCache;
import com.zentrel.vistabase.assets.modelcache.segmentation.SegmentationModelCache;
import com.zentrel.vistabase.common.exception.EffectsFrameworkException;
import java.io.File;
import java.io.IOException;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;

/** The whole life of a capability's models: put in, updated, evicted, put back, trimmed. */
final class ModelLife {
    private static final String TRACKER = "face_tracker_model.bin";
    private static final String DETECTOR = "face_detector_model.bin";
    private static final String FEATURES = "features_model.bin";
    private static final String PDM = "pdm_multires.bin";
    private static final String INIT_NET = "seg_init_net.pb";
    private static final String PREDICT_NET = "seg_predict_net.pb";
    private static final long AMPLE_BUDGET = 1L << 40;

    private final Path mFolder;
    private final Path mFaceRoot;
    private final Path mSegmentationRoot;
    private final List<File> mFiles;

    ModelLife(Path folder, List<File> files) {
        mFolder = folder;
        mFaceRoot = folder.resolve("facetracking");
        mSegmentationRoot = folder.resolve("segmentation");
        mFiles = files;
    }

    /** The first run of an app. */
    void firstRun() throws IOException, InterruptedException {
        Show.chapter("Face tracking: four files make a version");
        try (FileCacheBasicImpl files = new FileCacheBasicImpl(mFaceRoot.toString(), AMPLE_BUDGET);
                FacetrackerModelCache models = new FacetrackerModelCache(files)) {
            putVersion1(files, models);
            putVersion2(files, models);
        }
        putSegmentation();
        evictAndPutBack();
        trim();
        Show.step("What lies on disk");
        Show.tree(mFaceRoot);
        Show.tree(mSegmentationRoot);
        for (Path root : new Path[] {mFaceRoot, mSegmentationRoot}) {
            Show.note("");
            Show.note(mFolder.relativize(root) + ", the index under \"versioned_index\":");
            Show.text(root.resolve("versioned_index"));
        }
    }

    /** A later run: everything is still there. */
    void laterRun() {
        Show.chapter("A new process finds everything again");
        try (FileCacheBasicImpl files = new FileCacheBasicImpl(mFaceRoot.toString(), AMPLE_BUDGET);
                FacetrackerModelCache models = new FacetrackerModelCache(files)) {
            paths(models, 2);
        }
        try (FileCacheBasicImpl files =
                        new FileCacheBasicImpl(mSegmentationRoot.toString(), AMPLE_BUDGET);
                SegmentationModelCache models = new SegmentationModelCache(files)) {
            paths(models, 1);
        }
    }

    private void putVersion1(FileCacheBasicImpl files, FacetrackerModelCache models)
            throws IOException, InterruptedException {
        String[] types = {TRACKER, DETECTOR, FEATURES, PDM};
        for (int i = 0; i < types.length; ++i) {
            Show.step("Version 1: put " + types[i] + " in");
            FileCacheTour.put(files, file(i), "v1-" + types[i]);
            add(models, 1, "v1-" + types[i], types[i]);
            paths(models, 1);
        }
    }

    private void putVersion2(FileCacheBasicImpl files, FacetrackerModelCache models)
            throws IOException, InterruptedException {
        Show.step("Version 2: one new file, three shared with version 1");
        FileCacheTour.put(files, file(4), "v2-" + DETECTOR);
        add(models, 2, "v1-" + TRACKER, TRACKER);
        add(models, 2, "v2-" + DETECTOR, DETECTOR);
        add(models, 2, "v1-" + FEATURES, FEATURES);
        add(models, 2, "v1-" + PDM, PDM);
        paths(models, 2);
    }

    private void putSegmentation() throws IOException, InterruptedException {
        Show.chapter("Segmentation: two files, in a file cache of its own");
        try (FileCacheBasicImpl files =
                        new FileCacheBasicImpl(mSegmentationRoot.toString(), AMPLE_BUDGET);
                SegmentationModelCache models = new SegmentationModelCache(files)) {
            Show.step("Version 1 of segmentation");
            String[] types = {INIT_NET, PREDICT_NET};
            for (int i = 0; i < types.length; ++i) {
                FileCacheTour.put(files, file(5 + i), "v1-" + types[i]);
                Show.call("addModelForVersionIfInCache(1, \"v1-" + types[i] + "\", ...)",
                        models.addModelForVersionIfInCache(1, "v1-" + types[i], types[i]));
            }
            paths(models, 1);
            Show.step("A model of another capability");
            try {
                models.addModelForVersionIfInCache(1, "v1-" + INIT_NET, TRACKER);
            } catch (EffectsFrameworkException failure) {
                Show.note("refused: " + failure.getMessage());
            }
        }
    }

    private void evictAndPutBack() throws IOException, InterruptedException {
        Show.chapter("A budget that is one byte too small");
        File another = file(0);
        try (FileCacheBasicImpl files = withRoomFor(another.length() - 1);
                FacetrackerModelCache models = new FacetrackerModelCache(files)) {
            Show.step("Use every file but one, then put another file in");
            for (String key : new String[] {
                "v1-" + TRACKER, "v1-" + DETECTOR, "v2-" + DETECTOR, "v1-" + PDM, "versioned_index"
            }) {
                files.getCacheEntry(key);
            }
            Thread.sleep(2);
            FileCacheTour.put(files, another, "another_effect.bin");
            Show.call("getCacheEntry(\"v1-" + FEATURES + "\")",
                    files.getCacheEntry("v1-" + FEATURES));
            Show.note("evicted: version 2 is incomplete now, and so has no paths");
            paths(models, 2);
        }
        try (FileCacheBasicImpl files = new FileCacheBasicImpl(mFaceRoot.toString(), AMPLE_BUDGET);
                FacetrackerModelCache models = new FacetrackerModelCache(files)) {
            Show.step("Put the file back: the index still knows it");
            FileCacheTour.put(files, file(2), "v1-" + FEATURES);
            paths(models, 2);
        }
    }

    private void trim() {
        Show.chapter("Only the newest version is needed");
        try (FileCacheBasicImpl files = new FileCacheBasicImpl(mFaceRoot.toString(), AMPLE_BUDGET);
                FacetrackerModelCache models = new FacetrackerModelCache(files)) {
            Show.step("trimExceptVersion(2)");
            models.trimExceptVersion(2);
            Show.call("getCacheEntry(\"v1-" + DETECTOR + "\")",
                    files.getCacheEntry("v1-" + DETECTOR));
            Show.note("only version 1 used that file; the three that version 2 shares are kept");
            paths(models, 1);
            paths(models, 2);
        }
    }

    /** The face-tracking cache, with a budget of what it holds and that many bytes more. */
    private FileCacheBasicImpl withRoomFor(long bytes) {
        String root = mFaceRoot.toString();
        try (FileCacheBasicImpl files = new FileCacheBasicImpl(root, AMPLE_BUDGET)) {
            return new FileCacheBasicImpl(root, files.getSize() + bytes);
        }
    }

    /** There are seven roles to fill; with fewer files, some play several. */
    private File file(int role) {
        return mFiles.get(role % mFiles.size());
    }

    private static void add(FacetrackerModelCache models, int version, String key, String type) {
        Show.call("addModelForVersionIfInCache(" + version + ", \"" + key + "\", \"" + type + "\")",
                models.addModelForVersionIfInCache(version, key, type));
    }

    private void paths(FacetrackerModelCache models, int version) {
        List<String> paths = new ArrayList<>();
        paths.add(Show.below(mFolder, models.getFaceAlignPath(version)));
        paths.add(Show.below(mFolder, models.getFaceDetectPath(version)));
        paths.add(Show.below(mFolder, models.getFaceContourPath(version)));
        paths.add(Show.below(mFolder, models.getMeshPath(version)));
        Show.call("face-tracking paths of version " + version, paths);
    }

    private void paths(SegmentationModelCache models, int version) {
        List<String> paths = new ArrayList<>();
        paths.add(Show.below(mFolder, models.getInitNetPath(version)));
        paths.add(Show.below(mFolder, models.getPredictNetPath(version)));
        Show.call("segmentation paths of version " + version, paths);
    }
}
