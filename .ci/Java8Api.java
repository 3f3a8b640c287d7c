import java.io.IOException;
import java.io.OutputStream;
import java.nio.ByteBuffer;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.Enumeration;
import java.util.zip.ZipEntry;
import java.util.zip.ZipFile;
import java.util.zip.ZipOutputStream;

/**
 * {@code java Java8Api.java JAR}: writes the Java 8 API as a jar of class files, for tools that
 * cannot read the JDK's own. The JDK has it in lib/ct.sym, for javac --release: class files without
 * code, under folders whose names list the releases that they stand for.
 */
final class Java8Api {
    private static final int VERSION_OFFSET = 6;
    private static final short JAVA_8 = 52;

    public static void main(String[] arguments) throws IOException {
        Path symbols = Path.of(System.getProperty("java.home"), "lib", "ct.sym");
        try (ZipFile source = new ZipFile(symbols.toFile());
                OutputStream file = Files.newOutputStream(Path.of(arguments[0]));
                ZipOutputStream target = new ZipOutputStream(file)) {
            Enumeration<? extends ZipEntry> entries = source.entries();
            while (entries.hasMoreElements()) {
                ZipEntry entry = entries.nextElement();
                String[] parts = entry.getName().split("/", 3);  // RELEASES/MODULE/CLASS.sig
                if (parts.length == 3 && parts[0].contains("8") && parts[2].endsWith(".sig")) {
                    byte[] bytes = source.getInputStream(entry).readAllBytes();
                    ByteBuffer.wrap(bytes).putShort(VERSION_OFFSET, JAVA_8);
                    target.putNextEntry(new ZipEntry(parts[2].replace(".sig", ".class")));
                    target.write(bytes);
                }
            }
        }
    }
}
