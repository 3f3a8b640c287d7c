import java.io.File;
import java.io.IOException;
import java.nio.file.Path;
import java.nio.file.Paths;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.List;

/** {@code Demo first|later FOLDER FILE...}: a first run of an app, or a later one. */
public final class Demo {
    private Demo() {}

    public static void main(String[] arguments) throws Exception {
        Path folder = Paths.get(arguments[1]);
        List<File> files = new ArrayList<>();
        Arrays.stream(arguments).skip(2).map(File::new).forEach(files::add);
        ModelLife life = new ModelLife(folder, files);
        try {
            if (arguments[0].equals("first")) {
                new FileCacheTour(folder, files.subList(0, Math.min(3, files.size()))).run();
                life.firstRun();
            } else {
                life.laterRun();
            }
        } catch (IOException exception) {
            System.err.println("the demo cannot go on: " + exception);
            System.exit(1);
        }
    }
}
