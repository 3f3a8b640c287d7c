import java.io.IOException;
import java.net.HttpURLConnection;

/** A server answered, but not with the file. */
public final class HttpStatusException extends IOException {
    private static final long serialVersionUID = 1L;
    private static final int TOO_MANY_REQUESTS = 429;
    private static final long MILLIS_PER_SECOND = 1_000;

    private final int mStatus;
    private final long mRetryAfterMillis;

    HttpStatusException(int status, HttpURLConnection connection) {
        super("HTTP status " + status + " for " + connection.getURL());
        mStatus = status;
        mRetryAfterMillis = MILLIS_PER_SECOND * connection.getHeaderFieldInt("Retry-After", 0);
    }

    /** The status code. */
    public int status() {
        return mStatus;
    }

    /** Whether the same request may succeed later: the server is in trouble, or too busy. */
    boolean isTransient() {
        return mStatus >= HttpURLConnection.HTTP_INTERNAL_ERROR
                || mStatus == HttpURLConnection.HTTP_CLIENT_TIMEOUT
                || mStatus == TOO_MANY_REQUESTS;
    }

    /** How long the server asks to wait; 0 if it does not say, or gives a date. */
    long retryAfterMillis() {
        return mRetryAfterMillis;
    }
}
