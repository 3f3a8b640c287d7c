import java.io.File;
import java.io.IOException;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.Collections;
import java.util.List;
import java.util.regex.Pattern;
import java.util.stream.Collectors;
import java.util.stream.Stream;

/** Prints what happens, and what is on disk. */
final class Show {
    private static final Pattern DIGEST = Pattern.compile("([0-9a-f]{8})[0-9a-f]{56}");

    private static int sStep;

    private Show() {}

    static void chapter(String title) {
        System.out.println();
        System.out.println("== " + title);
    }

    static void step(String what) {
        System.out.println();
        System.out.println(++sStep + ". " + what);
    }

    /** One call and its result. */
    static void call(String call, Object result) {
        note(call + " -> " + result);
    }

    static void note(String text) {
        System.out.println("   " + DIGEST.matcher(text).replaceAll("$1..."));
    }

    /** The part of a path that lies below the demo's folder. */
    static String below(Path folder, String path) {
        return folder.toAbsolutePath().relativize(new File(path).toPath()).toString();
    }

    static void tree(Path folder) throws IOException {
        List<Path> paths;
        try (Stream<Path> walk = Files.walk(folder)) {
            paths = walk.filter(path -> !path.equals(folder)).collect(Collectors.toList());
        }
        Collections.sort(paths);
        List<String> lines = new ArrayList<>();
        lines.add(folder.getFileName() + "/");
        for (Path path : paths) {
            Path relative = folder.relativize(path);
            StringBuilder line = new StringBuilder();
            for (int depth = 0; depth < relative.getNameCount(); ++depth) {
                line.append("  ");
            }
            line.append(path.getFileName());
            if (Files.isDirectory(path)) {
                line.append('/');
            } else {
                line.append("  ").append(Files.size(path)).append(" bytes");
            }
            lines.add(line.toString());
        }
        lines.forEach(Show::note);
    }

    static void text(Path file) throws IOException {
        note(new String(Files.readAllBytes(file), StandardCharsets.UTF_8));
    }
}
