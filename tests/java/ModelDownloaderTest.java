import static java.util.Arrays.asList;
import static org.junit.jupiter.api.Assertions.*;

import com.lumora.camera.effect.qv.modelcache.*;
import com.sun.net.httpserver.HttpExchange;
import java.io.*;
import java.util.*;
import java.util.concurrent.*;
import java.util.stream.Stream;
import org.junit.jupiter.api.*;
import org.junit.jupiter.api.io.TempDir;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.*;

/** The example's downloader against servers as they are. */
class ModelDownloaderTest {
    private static final int SIZE = Samples.SIZE;
    private static final int HALF = SIZE / 2;

    @TempDir File mRoot;
    private ModelServer mServer;
    private ModelStore mStore;
    private final List<Long> mProgress = new ArrayList<>();
    /** What there would have been to wait, in milliseconds. */
    private final List<Long> mDelays = new ArrayList<>();

    @BeforeEach
    void open() throws IOException {
        mServer = new ModelServer();
        mStore = ModelStore.open(mRoot, Capability.FACE_TRACKING, 4 * SIZE);
    }

    @AfterEach
    void close() {
        mStore.close();
        mServer.close();
    }

    private ModelDownloader downloader() {
        BackOff noDelay = new BackOff() {
            @Override
            public long millisAfter(int failures, IOException failure) {
                mDelays.add(super.millisAfter(failures, failure));
                return 0;
            }
        };
        return new ModelDownloader(mStore, noDelay, (bytes, total) -> mProgress.add(total - bytes));
    }

    /** Updates to version 7. The result, in a word. */
    private String update() throws IOException {
        try {
            downloader().update(Manifest.fetch(mServer.manifest(7)));
            assertEquals(asList(7), mStore.versions());
            assertEquals(7, mStore.activeVersion());
            assertEquals(0, mProgress.get(mProgress.size() - 1));
            return "updated";
        } catch (StoreException failure) {
            return failure.reason().name();
        } catch (HttpStatusException failure) {
            return String.valueOf(failure.status());
        }
    }

    private static Arguments server(String does, String result, List<Integer> offsets,
            int times, ModelServer.Answer... answers) {
        List<ModelServer.Answer> all = new ArrayList<>();
        Collections.nCopies(times, asList(answers)).forEach(all::addAll);
        return Arguments.of(does, result, offsets, all);
    }

    private static ModelServer.Answer send(int end) {
        return ModelServer.send(end);
    }

    private static ModelServer.Answer status(int status, String... header) {
        return ModelServer.status(status, header);
    }

    private static ModelServer.Answer sendWithoutRange(int end) {
        return (exchange, file, offset) -> send(end).to(exchange, file, 0);
    }

    private static ModelServer.Answer sendWithoutLastChunk(int end) {
        return (exchange, file, offset) -> {
            exchange.sendResponseHeaders(200, 0);
            exchange.getResponseBody().write(file, 0, end);
            exchange.getResponseBody().flush();
            throw new IOException();
        };
    }

    private static void sendWrong(HttpExchange exchange, byte[] file, int offset)
            throws IOException {
        file[SIZE - 1] ^= 1;
        send(SIZE).to(exchange, file, offset);
    }

    static Stream<Arguments> servers() {
        ModelServer.Answer wrong = ModelDownloaderTest::sendWrong;
        return Stream.of(
                server("cuts the connection", "updated", asList(0, HALF), 1, send(HALF)),
                server("cuts a chunk", "updated", asList(0, HALF), 1, sendWithoutLastChunk(HALF)),
                server("cuts after all bytes", "updated", asList(0), 1, sendWithoutLastChunk(SIZE)),
                server("gets a bit further each time", "updated", asList(0, 1, 2, 3, 4, 5, 6, 7), 1,
                        send(1), send(2), send(3), send(4), send(5), send(6), send(7)),
                server("ignores ranges", "updated", asList(0, HALF), 1,
                        send(HALF), sendWithoutRange(SIZE)),
                server("ignores ranges and gets no further", "TOO_SHORT",
                        asList(0, HALF, HALF, HALF, HALF), 9, sendWithoutRange(HALF)),
                server("replaces the file half-way", "updated", asList(0, HALF, 0), 1,
                        send(HALF), wrong),
                server("has a wrong file", "WRONG_CONTENT", asList(0, 0), 9, wrong),
                server("is busy", "updated", asList(0, 0, 0, 0), 1,
                        status(408), status(429), status(503)),
                server("is down", "500", asList(0, 0, 0, 0, 0), 9, status(500)),
                server("lacks the file", "404", asList(0), 1, status(404)),
                server("has moved", "updated", asList(0, HALF, HALF), 1,
                        send(HALF), status(302, "Location", ModelServer.FIRST)));
    }

    @ParameterizedTest(name = "that {0}")
    @MethodSource("servers")
    void copesWithAServer(String does, String result, List<Integer> offsets,
            List<ModelServer.Answer> answers) throws IOException {
        mServer.answers.addAll(answers);
        assertEquals(result, update());
        assertEquals(offsets, mServer.offsets);
    }

    @Test
    void hangsUpOnAServerThatSendsTooMuch() throws IOException {
        mServer.answers.add((exchange, file, offset) -> {
            exchange.sendResponseHeaders(200, 0);
            for (int i = 0; i < 100_000; ++i) {
                exchange.getResponseBody().write(file);
            }
            mServer.offsets.add(-1);
        });
        assertEquals("updated", update());
        assertEquals(asList(0, 0), mServer.offsets);
    }

    @ParameterizedTest(name = "interrupted: {0}, waiting to retry: {1}")
    @CsvSource({"true, true", "true, false", "false, true", "false, false"})
    void endsHalfWayAndIsResumed(boolean isInterrupted, boolean isWaiting) throws IOException {
        CountDownLatch isTold = new CountDownLatch(1);
        mServer.answers.add(isWaiting ? send(HALF) : (exchange, file, offset) -> {
            send(HALF).to(exchange, file, 0);
            assertDoesNotThrow(() -> isTold.await());
            exchange.getResponseBody().write(file, HALF, SIZE - HALF);
        });
        Thread downloading = Thread.currentThread();
        ModelDownloader[] downloader = {null};
        Thread ending = new Thread(() -> {
            if (isInterrupted) {
                downloading.interrupt();
            } else {
                downloader[0].cancel();
            }
            isTold.countDown();
        });
        BackOff slow = new BackOff() {
            @Override
            public long millisAfter(int failures, IOException failure) {
                if (isWaiting) {
                    ending.start();
                }
                return 60_000;
            }
        };
        downloader[0] = new ModelDownloader(mStore, slow, (bytes, total) -> {
            if (bytes == HALF && !isWaiting) {
                ending.start();
            }
        });
        Manifest manifest = Manifest.fetch(mServer.manifest(7));
        Exception ended = assertThrows(Exception.class, () -> downloader[0].update(manifest));
        assertEquals(isInterrupted ? InterruptedIOException.class : CancellationException.class,
                ended.getClass());
        assertEquals(isInterrupted, Thread.interrupted());
        assertEquals("updated", update());
        assertEquals(asList(0, HALF), mServer.offsets);
        assertEquals(4 * SIZE - HALF, mProgress.get(0));
    }

    @Test
    void downloadsNothingOnceCancelledOrRefused() throws IOException {
        ModelDownloader cancelled = downloader();
        cancelled.cancel();
        Manifest manifest = Manifest.fetch(mServer.manifest(7));
        assertThrows(CancellationException.class, () -> cancelled.update(manifest));
        mStore.setMaxSizeBytes(SIZE);
        assertEquals("NO_ROOM", update());
        assertEquals(asList(), mServer.offsets);
    }

    @Test
    void waitsLongerEachTimeAndAsLongAsItIsAsked() throws IOException {
        Manifest manifest = Manifest.fetch(mServer.manifest(7));
        mServer.answers.add(status(503, "Retry-After", "50"));
        mServer.answers.add(status(503, "Retry-After", "3600"));
        downloader().update(manifest);
        assertEquals(asList(50_000L, 60_000L), mDelays);

        mServer.answers.addAll(Collections.nCopies(5, status(500)));
        Manifest next = Manifest.fetch(mServer.manifest(8));
        mStore.setMaxSizeBytes(8 * SIZE);
        IOException down = assertThrows(IOException.class, () -> downloader().update(next));
        assertTrue(ModelDownloader.isWorthRetrying(down), "later");
        for (int i = 0; i < 4; ++i) {
            long millis = mDelays.get(2 + i);
            assertTrue(millis >= 500 << i && millis <= 1000 << i, mDelays::toString);
        }
    }

    static Stream<String> wrongManifests() {
        String good = ModelServer.describe(7);
        return Stream.of("<html>", good.replace("url", "URL"), good.replace("1000", "-1"),
                good.replace("\"7/", "\"file:/7/"), good.replace(ModelServer.FIRST, "type"),
                good + new String(new char[1 << 16]).replace('\0', ' '));
    }

    @ParameterizedTest
    @MethodSource("wrongManifests")
    void refusesWhatIsNoManifestOfTheStore(String text) throws IOException {
        mServer.manifest = text;
        assertEquals("WRONG_CONTENT", update());
    }
}
