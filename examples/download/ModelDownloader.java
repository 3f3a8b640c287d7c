import com.lumora.camera.effect.qv.modelcache.*;
import java.io.IOException;
import java.io.InputStream;
import java.io.InterruptedIOException;
import java.net.URL;
import java.util.concurrent.CancellationException;
import java.util.concurrent.CountDownLatch;
import java.util.concurrent.TimeUnit;

/** Updates a store over HTTP. However an update ends, the next one resumes where it stopped. */
public final class ModelDownloader {
    /** Called on the downloading thread, for every piece that comes in: be quick. */
    public interface Progress {
        /** Bytes stored so far: fewer than before if a file has to be downloaded again. */
        void onProgress(long bytes, long totalBytes);
    }

    /** In a row, without a new byte. */
    private static final int MAX_FAILURES = 5;

    private final ModelStore mStore;
    private final BackOff mBackOff;
    private final Progress mProgress;
    private final CountDownLatch mCancelled = new CountDownLatch(1);
    private volatile Update mUpdate;

    /** A downloader for one update. */
    public ModelDownloader(ModelStore store, BackOff backOff, Progress progress) {
        mStore = store;
        mBackOff = backOff;
        mProgress = progress;
    }

    /**
     * Downloads what the store lacks of a version, and makes that version the active one.
     *
     * @throws InterruptedIOException if the thread is interrupted, and stays so
     * @throws CancellationException after {@link #cancel}
     * @throws IOException if it fails; see {@link #isWorthRetrying}
     */
    public void update(Manifest manifest) throws IOException {
        try (Update update = begin(manifest)) {
            mUpdate = update;
            if (isCancelled()) { // before the update began
                update.cancel();
            }
            report(update);
            for (ModelFile file : update.missing()) {
                download(update, file, manifest.url(file));
            }
            update.activate();
        }
    }

    /** Ends the update at its next bytes, or at once if it waits to retry. Any thread. */
    public void cancel() {
        mCancelled.countDown();
        Update update = mUpdate;
        if (update != null) {
            update.cancel();
        }
    }

    private boolean isCancelled() {
        return mCancelled.getCount() == 0;
    }

    /** A mistake of the server must not become an unchecked exception of the app. */
    private Update begin(Manifest manifest) throws IOException {
        try {
            return mStore.begin(manifest.version(), manifest.files());
        } catch (IllegalArgumentException unfit) {
            throw new StoreException(StoreException.Reason.WRONG_CONTENT, unfit.getMessage());
        }
    }

    private void report(Update update) throws IOException {
        long total = update.totalBytes();
        mProgress.onProgress(total - update.remainingBytes(), total);
    }

    /** Downloads one file, in as many attempts as it takes. */
    private void download(Update update, ModelFile file, URL url) throws IOException {
        long leastRemaining = update.remainingBytes();
        boolean wasWrong = false;
        for (int failures = 1;; ++failures) {
            try (ModelWriter out = update.write(file)) {
                receive(update, file, url, out);
                out.commit();
                return;
            } catch (IOException failure) {
                // A file that the server replaced between two attempts is a mixture: try again. If
                // it is wrong again, it is wrong on the server.
                boolean isWrong = isFor(failure, StoreException.Reason.WRONG_CONTENT);
                if (isWrong ? wasWrong : !isWorthRetrying(failure)) {
                    throw failure;
                }
                wasWrong |= isWrong;
                long remaining = update.remainingBytes();
                if (remaining < leastRemaining) {
                    leastRemaining = remaining;
                    failures = 1;
                }
                if (failures >= MAX_FAILURES) {
                    throw failure;
                }
                pause(mBackOff.millisAfter(failures, failure));
            }
        }
    }

    private void pause(long millis) throws InterruptedIOException {
        try {
            if (mCancelled.await(millis, TimeUnit.MILLISECONDS)) {
                throw new CancellationException("the update was cancelled");
            }
        } catch (InterruptedException interrupted) {
            Thread.currentThread().interrupt();
            throw new InterruptedIOException("the thread was interrupted");
        }
    }

    /** Whether it may succeed later, without freeing room or repairing anything. */
    public static boolean isWorthRetrying(IOException failure) {
        if (failure instanceof HttpStatusException) {
            return ((HttpStatusException) failure).isTransient();
        }
        // Anything else is the network's: no route, a timeout, a lost connection.
        return !(failure instanceof StoreException)
                || isFor(failure, StoreException.Reason.TOO_SHORT);
    }

    private static boolean isFor(IOException failure, StoreException.Reason reason) {
        return failure instanceof StoreException
                && ((StoreException) failure).reason() == reason;
    }

    /** One attempt. If the body ends early, commit throws and keeps what came. */
    private void receive(Update update, ModelFile file, URL url, ModelWriter out)
            throws IOException {
        long offset = out.offset();
        if (offset == file.sizeBytes()) {
            return; // The last attempt failed after the last byte: nothing is left to request.
        }
        try (HttpGet get = new HttpGet(url, offset); InputStream body = get.body()) {
            if (offset > 0 && !get.isPartial()) {
                out.restart(); // The server ignored the range: this is the whole file.
            }
            byte[] buffer = new byte[1 << 16];
            // Up to one byte too many, which write refuses.
            while (out.offset() <= file.sizeBytes()) {
                int count = body.read(buffer);
                if (count < 0) {
                    break;
                }
                out.write(buffer, 0, count);
                report(update);
            }
        }
    }
}
