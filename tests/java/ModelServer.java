import com.lumora.camera.effect.qv.modelcache.*;
import com.sun.net.httpserver.*;
import java.io.*;
import java.net.*;
import java.util.*;
import java.util.concurrent.*;

/** Serves the versions of Samples on loopback, and the first file of each as it is told to. */
public final class ModelServer implements Closeable {
    static final String FIRST = Samples.files(0).get(0).type();

    interface Answer {
        /** Answers a request for a file from an offset on. What throws cuts the connection. */
        void to(HttpExchange exchange, byte[] file, int offset) throws IOException;
    }

    /** To the next requests for the first file. Once there are none, all is well. */
    final Queue<Answer> answers = new ConcurrentLinkedQueue<>();
    /** Where those requests began. */
    final List<Integer> offsets = Collections.synchronizedList(new ArrayList<>());
    /** Served in place of a manifest, unless null. */
    volatile String manifest;

    private final HttpServer mServer =
            HttpServer.create(new InetSocketAddress(InetAddress.getLoopbackAddress(), 0), 0);

    public ModelServer() throws IOException {
        mServer.createContext("/", this::answer);
        mServer.start();
    }

    public URL manifest(int version) throws IOException {
        return new URL("http", "127.0.0.1", mServer.getAddress().getPort(), "/v/" + version);
    }

    private void answer(HttpExchange exchange) throws IOException {
        String[] path = exchange.getRequestURI().getPath().split("/");
        int version = Integer.parseInt(path[2]);
        boolean isFile = path.length == 4;
        byte[] bytes = isFile ? Samples.bytes(path[3], version)
                : (manifest == null ? describe(version) : manifest).getBytes("UTF-8");
        String range = exchange.getRequestHeaders().getFirst("Range");
        int offset = range == null ? 0 : Integer.parseInt(range.replaceAll("\\D", ""));
        String encoding = exchange.getRequestHeaders().getFirst("Accept-Encoding");
        boolean isExact = "identity".equals(encoding);
        Answer answer = isExact ? send(bytes.length) : status(406);
        if (isFile && path[3].equals(FIRST)) {
            offsets.add(offset);
            answer = answers.isEmpty() ? answer : answers.remove();
        }
        answer.to(exchange, bytes, offset);
        exchange.close();
    }

    static String describe(int version) {
        List<String> files = new ArrayList<>();
        for (ModelFile file : Samples.files(version)) {
            files.add(String.format("{'type': '%s', 'url': '%d/%1$s', 'size': %d, 'sha256': '%s'}",
                    file.type(), version, file.sizeBytes(), file.sha256()));
        }
        return String.format("{'version': %d, 'files': %s}", version, files).replace('\'', '"');
    }

    /** Sends a file up to some byte, though it announces all of it: the connection is cut. */
    static Answer send(int end) {
        return (exchange, file, offset) -> {
            exchange.sendResponseHeaders(offset > 0 ? 206 : 200, file.length - offset);
            exchange.getResponseBody().write(file, offset, end - offset);
            exchange.getResponseBody().flush();
        };
    }

    static Answer status(int status, String... header) {
        return (exchange, file, offset) -> {
            for (int i = 0; i < header.length; i += 2) {
                exchange.getResponseHeaders().set(header[i], header[i + 1]);
            }
            exchange.sendResponseHeaders(status, -1);
        };
    }

    @Override
    public void close() {
        mServer.stop(0);
    }
}
