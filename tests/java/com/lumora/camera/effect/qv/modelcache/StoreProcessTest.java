package com.lumora.camera.effect.qv.modelcache;

import static com.lumora.camera.effect.qv.modelcache.Samples.*;
import static org.junit.jupiter.api.Assertions.*;

import java.io.*;
import java.nio.file.Files;
import java.util.*;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;

/** Stores of several processes, some of which are killed. */
class StoreProcessTest {
    @TempDir File mFolder;
    private File mRoot;
    private File mOutput;

    /**
     * Lives with a store until it is killed: gets versions, goes back and forth between them, trims,
     * and opens the store anew. Says before each activation what may be active from now on, and
     * after it what is.
     */
    public static void main(String[] arguments) throws Exception {
        File root = new File(arguments[0]);
        Random random = new Random();
        if (arguments[1].equals("hold")) {
            try (ModelStore store = Samples.open(root)) {
                System.out.println("holds " + store.activeVersion());
                Thread.sleep(100_000);
            }
        }
        System.out.println("begins");
        for (int version = Integer.parseInt(arguments[1]);; ++version) {
            try (ModelStore store = ModelStore.open(root, CAPABILITY, TWO_VERSIONS)) {
                try (Update update = store.begin(version, files(version))) {
                    for (ModelFile file : update.missing()) {
                        ModelWriter out = update.write(file);
                        byte[] bytes = bytes(file.type(), version);
                        for (int i = (int) out.offset(); i < SIZE; ++i) {
                            out.write(bytes[i]);
                        }
                        out.commit();
                    }
                    System.out.println("may " + version);
                    update.activate();
                    System.out.println("is " + version);
                }
                int other = store.versions().get(random.nextInt(store.versions().size()));
                System.out.println("may " + other);
                store.activate(other);
                System.out.println("is " + other);
                if (random.nextBoolean()) {
                    store.trimExcept();
                }
            }
        }
    }

    private Process start(String argument) throws Exception {
        mRoot = new File(mFolder, "root");
        mOutput = new File(mFolder, "output");
        mOutput.delete();
        Process process = new ProcessBuilder(System.getProperty("java.home") + "/bin/java",
                "-XX:TieredStopAtLevel=1",
                "-Djava.library.path=" + System.getProperty("java.library.path"),
                "-cp", System.getProperty("java.class.path"), StoreProcessTest.class.getName(),
                mRoot.getPath(), argument)
                .redirectErrorStream(true).redirectOutput(mOutput).start();
        while (mOutput.length() == 0 && process.isAlive()) {
            Thread.sleep(1);
        }
        return process;
    }

    @Test
    void aKillAtAnyTimeLeavesTheActiveVersion() throws Exception {
        int kills = Integer.parseInt(
                Optional.ofNullable(System.getenv("MODELCACHE_KILLS")).orElse("10"));
        Random random = new Random();
        Set<Integer> possible = new HashSet<>(Collections.<Integer>singleton(null));
        int next = 1;
        // On a slow machine, most are killed before they have done much.
        for (int kill = 0; kill < kills || next <= kills / 4; ++kill) {
            Process process = start(String.valueOf(next));
            Thread.sleep(random.nextInt(400));
            process.destroyForcibly().waitFor();
            List<String> lines = Files.readAllLines(mOutput.toPath());
            assertEquals(128 + 9, process.exitValue(), () -> "by itself: " + lines);
            for (String line : lines.subList(1, lines.size())) {
                int version = Integer.parseInt(line.split(" ")[1]);
                if (line.startsWith("is ")) {
                    possible.clear();
                }
                possible.add(version);
                next = Math.max(next, version + 1);
            }
            try (ModelStore store = Samples.open(mRoot)) {
                assertTrue(possible.contains(store.activeVersion()),
                        store.activeVersion() + " is none of " + possible);
                assertActive(store.activeVersion(), store);
                possible.removeIf(version -> !Objects.equals(version, store.activeVersion()));
            }
        }
    }

    @Test
    void anotherProcessIsToldWhoHasTheRoot() throws Exception {
        Process process = start("hold");
        String message = assertThrows(IOException.class, () -> Samples.open(mRoot)).getMessage();
        process.destroyForcibly().waitFor();
        assertTrue(message.matches(".* the process [0-9]+ \\(.*java\\)"), message);
        Samples.open(mRoot).close();
    }
}
