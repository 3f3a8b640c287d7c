import java.io.File;
import java.io.IOException;
import java.nio.file.Path;
import java.nio.file.Paths;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.List;

/** {@code Demo first|later FOLDER FILE...}: the run of an app that is killed, or a later one. */
public final class Demo {
    private Demo() {}

    public static void main(String[] arguments) throws Exception {
        Path folder = Paths.get(arguments[1]);
        List<File> files = new ArrayList<>();
        Arrays.stream(arguments).skip(2).map(File::new).forEach(files::add);
        StoreLife life = new StoreLife(folder, files);
        try {
            if (arguments[0].equals("first")) {
                life.firstRun();
            } else {
                life.laterRun();
                new FileCacheTour(folder, files.subList(0, Math.min(3, files.size()))).run();
            }
        } catch (IOException exception) {
            System.err.println("the demo failed: " + exception);
            System.exit(1);
        }
    }
}
