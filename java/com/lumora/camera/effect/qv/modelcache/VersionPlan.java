package com.lumora.camera.effect.qv.modelcache;

import java.io.IOException;
import java.util.ArrayList;
import java.util.HashMap;
import java.util.LinkedHashMap;
import java.util.List;
import java.util.Map;

/** What a version that is asked for would consist of, beside the versions that there are. */
final class VersionPlan {
    private VersionPlan() {}

    /** A version of these files, under the names of entries that have their bytes already. */
    static Version of(int number, List<ModelFile> files, Capability capability, VersionTable table) {
        Map<String, String> namesByDigest = new HashMap<>();
        for (Map.Entry<String, ModelFile> entry : table.filesByName().entrySet()) {
            namesByDigest.put(entry.getValue().sha256(), entry.getKey());
        }
        Map<String, Long> sizesByDigest = new HashMap<>();
        Map<ModelFile, String> names = new LinkedHashMap<>();
        for (ModelFile file : inOrder(files, capability)) {
            Long size = sizesByDigest.put(file.sha256(), file.sizeBytes());
            if (size != null && size != file.sizeBytes()) {
                throw new IllegalArgumentException("two sizes of one digest: " + file);
            }
            if (!namesByDigest.containsKey(file.sha256())) {
                namesByDigest.put(file.sha256(), file.sha256() + "-" + file.type());
            }
            names.put(file, namesByDigest.get(file.sha256()));
        }
        return new Version(number, names);
    }

    /** Throws, with the numbers, if the version and the active one do not fit the budget together. */
    static void requireBudget(Version version, VersionTable table, long budget) throws IOException {
        Version active = table.active();
        Map<String, Long> sizes = new HashMap<>();
        long alone = addSizes(version, sizes);
        long together = active == null ? alone : addSizes(active, sizes);
        if (together > budget) {
            throw new IOException("version " + version.number() + " has " + alone + " bytes"
                    + (active == null ? "" : ", " + together + " together with the active version "
                    + active.number()) + ", and the budget is " + budget);
        }
    }

    private static List<ModelFile> inOrder(List<ModelFile> files, Capability capability) {
        Map<String, ModelFile> byType = new HashMap<>();
        for (ModelFile file : files) {
            if (file == null || !capability.types().contains(file.type())) {
                throw new IllegalArgumentException("not a type of " + capability + ": " + file);
            }
            if (byType.put(file.type(), file) != null) {
                throw new IllegalArgumentException("two files of one type: " + file);
            }
        }
        List<ModelFile> ordered = new ArrayList<>();
        for (String type : capability.types()) {
            if (!byType.containsKey(type)) {
                throw new IllegalArgumentException("no file of the type " + type);
            }
            ordered.add(byType.get(type));
        }
        return ordered;
    }

    /** Adds a version's files and returns the sum of all. */
    private static long addSizes(Version version, Map<String, Long> sizes) {
        for (Map.Entry<ModelFile, String> file : version.names().entrySet()) {
            sizes.put(file.getValue(), file.getKey().sizeBytes());
        }
        long sum = 0;
        for (long size : sizes.values()) {
            sum += Math.min(size, Long.MAX_VALUE - sum);
        }
        return sum;
    }
}
