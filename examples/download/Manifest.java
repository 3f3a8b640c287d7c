import com.lumora.camera.effect.qv.modelcache.ModelFile;
import com.lumora.camera.effect.qv.modelcache.StoreException;
import java.io.ByteArrayOutputStream;
import java.io.IOException;
import java.io.InputStream;
import java.net.MalformedURLException;
import java.net.URL;
import java.util.ArrayList;
import java.util.LinkedHashMap;
import java.util.List;
import java.util.Map;
import org.json.JSONArray;
import org.json.JSONException;
import org.json.JSONObject;

/**
 * A server's description of a version:
 *
 * <pre>{"version": 7, "files": [
 *   {"type": "face_tracker_model.bin", "url": "7/tracker.bin", "size": 51856, "sha256": "6f5f..."},
 *   ...]}</pre>
 *
 * URLs may be relative to the manifest's. Use HTTPS: its digests vouch for the files, but
 * nothing vouches for it.
 */
public final class Manifest {
    private static final int MAX_BYTES = 1 << 16;

    private final int mVersion;
    private final Map<ModelFile, URL> mUrls = new LinkedHashMap<>();

    /**
     * Downloads a manifest. Tries only once: there is nothing to lose yet by trying again later.
     *
     * @throws StoreException WRONG_CONTENT if what the server has is not a manifest
     * @throws IOException if it cannot be downloaded
     */
    public static Manifest fetch(URL url) throws IOException {
        try (HttpGet get = new HttpGet(url, 0); InputStream body = get.body()) {
            ByteArrayOutputStream text = new ByteArrayOutputStream();
            byte[] buffer = new byte[1 << 12];
            for (int count = 0; count >= 0 && text.size() <= MAX_BYTES; count = body.read(buffer)) {
                text.write(buffer, 0, count);
            }
            if (text.size() > MAX_BYTES) {
                throw notAManifest(get.url(), "more than " + MAX_BYTES + " bytes");
            }
            return new Manifest(get.url(), text.toString("UTF-8"));
        }
    }

    private Manifest(URL base, String text) throws IOException {
        try {
            JSONObject json = new JSONObject(text);
            mVersion = json.getInt("version");
            JSONArray files = json.getJSONArray("files");
            for (int i = 0; i < files.length(); ++i) {
                JSONObject file = files.getJSONObject(i);
                URL url = new URL(base, file.getString("url"));
                if (!url.getProtocol().equals(base.getProtocol())) {
                    throw new MalformedURLException("another protocol than the manifest's: " + url);
                }
                mUrls.put(new ModelFile(file.getString("type"), file.getLong("size"),
                        file.getString("sha256")), url);
            }
        } catch (JSONException | IllegalArgumentException | MalformedURLException
                | StackOverflowError wrong) { // The last one from thousands of brackets.
            throw notAManifest(base, wrong.toString());
        }
    }

    private static StoreException notAManifest(URL url, String why) {
        return new StoreException(
                StoreException.Reason.WRONG_CONTENT, "not a manifest: " + url + ": " + why);
    }

    /** The number of the version. */
    public int version() {
        return mVersion;
    }

    /** Its files, as {@code ModelStore.begin} takes them. */
    public List<ModelFile> files() {
        return new ArrayList<>(mUrls.keySet());
    }

    /** Where one of the files is. */
    public URL url(ModelFile file) {
        return mUrls.get(file);
    }
}
