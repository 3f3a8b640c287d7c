import java.io.Closeable;
import java.io.IOException;
import java.io.InputStream;
import java.net.HttpURLConnection;
import java.net.URL;

/**
 * A GET request that succeeded, to be closed. TLS, proxies and redirects are left
 * to the platform, which follows redirects within one protocol only.
 */
final class HttpGet implements Closeable {
    private static final int CONNECT_TIMEOUT_MILLIS = 10_000;
    /** Nothing wakes a thread that waits for a server, so cancelling may take this long. */
    private static final int READ_TIMEOUT_MILLIS = 20_000;

    private final HttpURLConnection mConnection;
    private final int mStatus;

    /** Asks for the bytes from an offset on. The server may ignore that: see {@link #isPartial}. */
    HttpGet(URL url, long offset) throws IOException {
        mConnection = (HttpURLConnection) url.openConnection();
        mConnection.setConnectTimeout(CONNECT_TIMEOUT_MILLIS);
        mConnection.setReadTimeout(READ_TIMEOUT_MILLIS);
        // By default Android accepts gzip, and ranges would count the compressed bytes.
        mConnection.setRequestProperty("Accept-Encoding", "identity");
        // Proxies revalidate what they have, and the app's HTTP cache keeps no second copy.
        mConnection.setRequestProperty("Cache-Control", "no-cache");
        mConnection.setUseCaches(false);
        if (offset > 0) {
            mConnection.setRequestProperty("Range", "bytes=" + offset + "-");
        }
        mStatus = requestStatus();
        if (mStatus != HttpURLConnection.HTTP_OK && mStatus != HttpURLConnection.HTTP_PARTIAL) {
            HttpStatusException failure = new HttpStatusException(mStatus, mConnection);
            mConnection.disconnect();
            throw failure;
        }
    }

    /** A URL from a server must not become an unchecked exception of the app. */
    private int requestStatus() throws IOException {
        try {
            return mConnection.getResponseCode();
        } catch (RuntimeException unusable) { // such as a port out of range, also of a redirect
            throw new IOException(unusable);
        }
    }

    /** Whether the body begins at the offset rather than at the first byte. */
    boolean isPartial() {
        return mStatus == HttpURLConnection.HTTP_PARTIAL;
    }

    InputStream body() throws IOException {
        return mConnection.getInputStream();
    }

    /** The URL that answered, after redirects. */
    URL url() {
        return mConnection.getURL();
    }

    /** Drops the connection, whatever is left of the body. */
    @Override
    public void close() {
        mConnection.disconnect();
    }
}
