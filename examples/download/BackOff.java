import java.io.IOException;

/** How long to wait for the next attempt: twice as long each time, a minute at most. */
public class BackOff {
    private static final long FIRST_MILLIS = 1_000;
    private static final long MAX_MILLIS = 60_000;

    /**
     * The milliseconds to wait.
     *
     * @param failures how many attempts have failed in a row, at least 1
     * @param failure the last one's
     */
    public long millisAfter(int failures, IOException failure) {
        long millis = FIRST_MILLIS;
        for (int i = 1; i < failures && millis < MAX_MILLIS; ++i) {
            millis *= 2;
        }
        // Half of it is random: devices that lost a server together should not return together.
        millis -= (long) (Math.random() * millis / 2);
        if (failure instanceof HttpStatusException) {
            millis = Math.max(millis, ((HttpStatusException) failure).retryAfterMillis());
        }
        return Math.min(millis, MAX_MILLIS);
    }
}
