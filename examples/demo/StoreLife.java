import com.lumora.camera.effect.qv.modelcache.Capability;
import com.lumora.camera.effect.qv.modelcache.ModelFile;
import com.lumora.camera.effect.qv.modelcache.ModelStore;
import com.lumora.camera.effect.qv.modelcache.ModelWriter;
import com.lumora.camera.effect.qv.modelcache.SoftErrors;
import com.lumora.camera.effect.qv.modelcache.StoreException;
import com.lumora.camera.effect.qv.modelcache.Update;
import java.io.File;
import java.io.IOException;
import java.io.OutputStream;
import java.math.BigInteger;
import java.nio.file.Files;
import java.nio.file.Path;
import java.security.MessageDigest;
import java.security.NoSuchAlgorithmException;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.Collections;
import java.util.LinkedHashMap;
import java.util.List;
import java.util.Locale;
import java.util.Map;

/** Two runs of an app that keeps models; the first one is killed. */
final class StoreLife {
    private static final Capability FACES = Capability.FACE_TRACKING;
    private static final Capability HANDS =
            Capability.of("HAND_TRACKING", "palm_detector.tflite", "hand_landmarks.tflite");
    private static final long BUDGET = 50_000_000;
    private static final int KILLED = 137; // the status that a shell reports

    private final Path mFolder;
    private final List<File> mFiles;
    private Map<String, String> mShown = Collections.emptyMap();

    StoreLife(Path folder, List<File> files) {
        mFolder = folder;
        mFiles = files;
    }

    /** Downloads version 1, and is killed while it downloads version 2. */
    void firstRun() throws IOException {
        Show.chapter("The model store: four files make a version of face tracking");
        try (ModelStore store = open(FACES)) {
            Show.step("Get version 1");
            update(store, FACES, 1);
            Show.step("Get version 2: only its detector is new");
            try (Update update = store.begin(2, files(FACES, 2))) {
                Show.call("missing()", update.missing());
                ModelFile file = update.missing().get(0);
                byte[] bytes = bytes(FACES, file.type(), 2);
                ModelWriter out = update.write(file);
                out.write(bytes, 0, bytes.length / 2);
                Show.note("wrote " + bytes.length / 2 + " of " + bytes.length + " bytes");
                Show.note("The system kills the app.");
                Runtime.getRuntime().halt(KILLED);
            }
        }
    }

    /** Resumes version 2, survives a wrong file, and goes back. */
    void laterRun() throws IOException {
        SoftErrors.setListener((file, function, line, severity, category, message) ->
                Show.note("soft error: " + message));
        Show.chapter("The app starts again");
        try (ModelStore store = open(FACES)) {
            show(store);
            Show.step("Resume version 2");
            update(store, FACES, 2);
            Show.step("Get version 3, but its detector arrives damaged");
            try (Update update = store.begin(3, files(FACES, 3))) {
                ModelFile file = update.missing().get(0);
                byte[] bytes = bytes(FACES, file.type(), 3);
                bytes[bytes.length / 2] ^= 1;
                try (ModelWriter out = update.write(file)) {
                    out.write(bytes);
                    out.commit();
                } catch (StoreException failure) {
                    Show.note(failure.reason() + ": " + failure.getMessage());
                }
                Show.call("missing()", update.missing());
            }
            show(store);
            Show.step("Version 2 does not work well: go back");
            store.activate(1);
            show(store);
            Show.step("Delete the others");
            store.trimExcept();
            Show.call("versions()", store.versions());
            Show.call("verify()", store.verify());
        }
        Show.step("What is on disk");
        Show.tree(rootOf(FACES).toPath());

        Show.chapter("Segmentation, and a capability of the app's own: a store for each");
        for (Capability capability : Arrays.asList(Capability.SEGMENTATION, HANDS)) {
            Show.step("Get version 1 of " + capability);
            try (ModelStore store = open(capability)) {
                update(store, capability, 1);
            }
        }
    }

    private ModelStore open(Capability capability) throws IOException {
        return ModelStore.open(rootOf(capability), capability, BUDGET);
    }

    private File rootOf(Capability capability) {
        String name = capability.name().replace("_", "").toLowerCase(Locale.ROOT);
        return mFolder.resolve(name).toFile();
    }

    private void update(ModelStore store, Capability capability, int version) throws IOException {
        try (Update update = store.begin(version, files(capability, version))) {
            for (ModelFile file : update.missing()) {
                try (ModelWriter out = update.write(file)) {
                    Show.note("write " + file.type() + " from byte " + out.offset());
                    byte[] bytes = bytes(capability, file.type(), version);
                    download(bytes, (int) out.offset(), out);
                    out.commit();
                }
            }
            update.activate();
        }
        show(store);
    }

    private static void download(byte[] bytes, int offset, OutputStream out) throws IOException {
        out.write(bytes, offset, bytes.length - offset);
    }

    /** The active version, and those of its paths that have changed since the last time. */
    private void show(ModelStore store) {
        Show.call("activeVersion()", store.activeVersion());
        Map<String, String> paths = new LinkedHashMap<>(store.paths());
        paths.entrySet().removeAll(mShown.entrySet());
        for (Map.Entry<String, String> path : paths.entrySet()) {
            Show.call("paths().get(\"" + path.getKey() + "\")", Show.below(mFolder, path.getValue()));
        }
        mShown = store.paths();
    }

    /** What a server would say about a version. */
    private List<ModelFile> files(Capability capability, int version) throws IOException {
        List<ModelFile> files = new ArrayList<>();
        for (String type : capability.types()) {
            byte[] bytes = bytes(capability, type, version);
            files.add(new ModelFile(type, bytes.length, sha256(bytes)));
        }
        return files;
    }

    /** The files of the command line play all parts. Versions differ only in the face detector. */
    private byte[] bytes(Capability capability, String type, int version) throws IOException {
        int role = capability.types().indexOf(type);
        byte[] bytes = Files.readAllBytes(mFiles.get(role % mFiles.size()).toPath());
        bytes[0] += (byte) (type.equals(Capability.FACE_DETECTOR) ? version : 0);
        return bytes;
    }

    private static String sha256(byte[] bytes) {
        try {
            byte[] digest = MessageDigest.getInstance("SHA-256").digest(bytes);
            return String.format("%064x", new BigInteger(1, digest));
        } catch (NoSuchAlgorithmException impossible) {
            throw new IllegalStateException(impossible);
        }
    }
}
