package com.lumora.camera.effect.qv.modelcache;

import static org.junit.jupiter.api.Assertions.*;

import java.io.*;
import java.net.*;
import java.nio.file.*;
import java.util.*;
import java.util.regex.*;
import java.util.stream.Stream;
import javax.tools.*;
import org.junit.jupiter.api.io.TempDir;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.*;

/** What the documents show is compiled and run as it stands there. */
public class DocumentsTest {
    /** What surrounds statements; a class that is shown is driven by statements of this test's. */
    private static final String SURROUNDINGS = "import com.lumora.camera.effect.qv.modelcache.*;\n"
            + "import java.io.*;\nimport java.util.*;\n"
            + "public class Surroundings {\n"
            + "  static void download(ModelFile file, long offset, OutputStream out) throws IOException {\n"
            + "    out.write(Samples.bytes(file.type(), 7), (int) offset, Samples.SIZE - (int) offset); }\n"
            + "  static void download(String key, OutputStream out) throws IOException {\n"
            + "    out.write(key.getBytes(\"UTF-8\")); }\n"
            + "  static void log(String text) {}\n"
            + "  public static void run(File dir) throws Exception {\n"
            + "    List<ModelFile> files = Samples.files(7);\n"
            + "    File root = new File(dir, \"models\");\n";

    private static final String FACE_MODELS = "try (ModelServer server = new ModelServer();\n"
            + "    FaceModels models = new FaceModels(dir)) {\n"
            + "  models.update(server.manifest(7), (bytes, total) -> {});\n"
            + "  models.update(server.manifest(8), (bytes, total) -> {});\n"
            + "  models.goBack(); models.keepOnlyTheActiveVersion();\n"
            + "  if (models.paths().size() != 4 || !models.isIntact()) throw new Exception(); }";

    private static final String RAW_FILES =
            "try (RawFiles files1 = new RawFiles(new File(dir, \"raw\"), 10)) {\n"
            + "  if (!files1.put(\"a\", out -> out.write(1), Collections.emptyList())\n"
            + "      || !files1.put(\"b\", out -> out.write(new byte[9]), Arrays.asList(\"a\"))\n"
            + "      || files1.put(\"c\", out -> out.write(new byte[11]), Arrays.asList(\"a\")))\n"
            + "    throw new Exception(); }";

    @TempDir File mFolder;

    /** Java of a document, each piece whole: blocks belong together until all braces are closed. */
    static Stream<Arguments> pieces() throws IOException {
        List<Arguments> pieces = new ArrayList<>();
        for (String document : new String[] {
            "README.md", "docs/embedding.md", "docs/raw-classes.md"}) {
            Path path = Paths.get(System.getProperty("modelcache.sources"), document);
            String text = new String(Files.readAllBytes(path), "UTF-8");
            Matcher block = Pattern.compile("```java\n(.*?)```", Pattern.DOTALL).matcher(text);
            String piece = "";
            while (block.find()) {
                piece += block.group(1);
                if (piece.chars().filter(c -> c == '{').count()
                        == piece.chars().filter(c -> c == '}').count()) {
                    pieces.add(Arguments.of(document, piece));
                    piece = "";
                }
            }
            assertEquals("", piece, "open braces at the end of " + document);
        }
        assertTrue(pieces.size() >= 6);
        return pieces.stream();
    }

    @ParameterizedTest
    @MethodSource("pieces")
    void aPieceRuns(String document, String piece) throws Exception {
        Matcher shown = Pattern.compile("(?m)^(?:public )?final class (\\w+)").matcher(piece);
        boolean isClass = shown.find();
        File example = new File(System.getProperty("modelcache.sources"),
                "examples/download/" + (isClass ? shown.group(1) : "") + ".java");
        if (example.exists()) { // which has a test of its own
            String source = new String(Files.readAllBytes(example.toPath()), "UTF-8");
            assertEquals(source.replaceAll("\n+", "\n"), piece.replaceAll("\n+", "\n"));
            return;
        }
        String body = !isClass ? piece
                : shown.group(1).equals("RawFiles") ? RAW_FILES : FACE_MODELS;
        if (isClass) {
            write(shown.group(1), piece);
        }
        ByteArrayOutputStream errors = new ByteArrayOutputStream();
        assertEquals(0, ToolProvider.getSystemJavaCompiler().run(null, errors, errors,
                "-d", mFolder.getPath(), "-sourcepath", mFolder.getPath(),
                "-cp", System.getProperty("java.class.path"),
                write("Surroundings", SURROUNDINGS + body + "}}\n")), errors::toString);
        try (URLClassLoader loader = new URLClassLoader(new URL[] {mFolder.toURI().toURL()});
                Samples.Told told = new Samples.Told()) {
            loader.loadClass("Surroundings").getMethod("run", File.class)
                    .invoke(null, new File(mFolder, "app"));
            assertEquals(Collections.emptyList(), told.messages);
        }
    }

    private String write(String name, String source) throws IOException {
        Path path = mFolder.toPath().resolve(name + ".java");
        Files.write(path, source.getBytes("UTF-8"));
        return path.toString();
    }
}
