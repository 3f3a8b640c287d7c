import com.lumora.camera.effect.qv.modelcache.Capability;
import com.lumora.camera.effect.qv.modelcache.ModelFile;
import com.lumora.camera.effect.qv.modelcache.ModelStore;
import com.lumora.camera.effect.qv.modelcache.ModelWriter;
import com.lumora.camera.effect.qv.modelcache.SoftErrors;
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
import java.util.List;
import java.util.Map;

/** Two runs of an app that keeps the models of face tracking; the first one is killed. */
final class StoreLife {
    private static final Capability CAPABILITY = Capability.FACE_TRACKING;
    private static final long BUDGET = 50_000_000;
    private static final int KILLED = 137; // as a shell tells it

    private final Path mFolder;
    private final File mRoot;
    private final List<File> mFiles;

    StoreLife(Path folder, List<File> files) {
        mFolder = folder;
        mRoot = folder.resolve("facetracking").toFile();
        mFiles = files;
    }

    /** Gets version 1, and is killed while it gets version 2. */
    void firstRun() throws IOException {
        Show.chapter("The model store: four files make a version of face tracking");
        try (ModelStore store = ModelStore.open(mRoot, CAPABILITY, BUDGET)) {
            Show.step("Get version 1");
            update(store, 1);
            Show.step("Get version 2, of which the detector alone is new");
            try (Update update = store.begin(2, files(2))) {
                Show.call("missing()", update.missing());
                ModelFile file = update.missing().get(0);
                byte[] bytes = bytes(file.type(), 2);
                ModelWriter out = update.write(file);
                out.write(bytes, 0, bytes.length / 2);
                Show.note("wrote " + bytes.length / 2 + " of " + bytes.length + " bytes");
                Show.note("The system kills the app.");
                Runtime.getRuntime().halt(KILLED);
            }
        }
    }

    /** Goes on with version 2, survives a wrong file, and goes back. */
    void laterRun() throws IOException {
        SoftErrors.setListener((file, function, line, severity, category, message) ->
                Show.note("soft error: " + message));
        Show.chapter("The app starts again");
        try (ModelStore store = ModelStore.open(mRoot, CAPABILITY, BUDGET)) {
            show(store);
            Show.step("Go on with version 2");
            update(store, 2);
            Show.step("Get version 3, of which a file comes damaged");
            try (Update update = store.begin(3, files(3))) {
                ModelFile file = update.missing().get(0);
                byte[] bytes = bytes(file.type(), 3);
                bytes[bytes.length / 2] ^= 1;
                try (ModelWriter out = update.write(file)) {
                    out.write(bytes);
                    out.commit();
                } catch (IOException failure) {
                    Show.note("refused: " + failure.getMessage());
                }
                Show.call("missing()", update.missing());
            }
            show(store);
            Show.step("Version 2 does not work well: go back");
            store.activate(1);
            show(store);
            Show.step("Keep nothing else");
            store.trimExcept();
            Show.call("versions()", store.versions());
            Show.call("verify()", store.verify());
        }
        Show.step("What lies on disk");
        Show.tree(mRoot.toPath());
    }

    private void update(ModelStore store, int version) throws IOException {
        try (Update update = store.begin(version, files(version))) {
            for (ModelFile file : update.missing()) {
                try (ModelWriter out = update.write(file)) {
                    Show.note("write " + file.type() + " from byte " + out.offset());
                    download(bytes(file.type(), version), (int) out.offset(), out);
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

    private void show(ModelStore store) {
        Show.call("activeVersion()", store.activeVersion());
        for (Map.Entry<String, String> path : store.paths().entrySet()) {
            Show.note(path.getKey() + " " + Show.below(mFolder, path.getValue()));
        }
    }

    /** What a server would say of a version. */
    private List<ModelFile> files(int version) throws IOException {
        List<ModelFile> files = new ArrayList<>();
        for (String type : CAPABILITY.types()) {
            byte[] bytes = bytes(type, version);
            files.add(new ModelFile(type, bytes.length, sha256(bytes)));
        }
        return files;
    }

    /** The files that were named play all roles. The versions differ in their detectors. */
    private byte[] bytes(String type, int version) throws IOException {
        int role = CAPABILITY.types().indexOf(type);
        byte[] bytes = Files.readAllBytes(mFiles.get(role % mFiles.size()).toPath());
        bytes[0] += (byte) (role == 1 ? version : 0);
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
