package com.lumora.camera.effect.qv.modelcache;

import java.io.File;
import java.io.IOException;
import java.util.ArrayList;
import java.util.LinkedHashMap;
import java.util.List;
import java.util.Map;
import java.util.regex.Matcher;
import java.util.regex.Pattern;

/**
 * Reads versions back from the index of the native caches, for a root that has lost both copies of
 * its table. The names of a store's entries have the digests of their bytes.
 */
final class IndexedVersions {
    private static final Pattern FACT = Pattern.compile(
            "\"version\":(-?[0-9]{1,10})|\"type\":\"([^\"]*)\",\"cacheKey\":\"([0-9a-f]{64})(-[\\w.]+)\"");

    private IndexedVersions() {}

    /** The versions whose files are all there with the right bytes; the last one is active. */
    static VersionTable read(File root, Capability capability) throws IOException {
        VersionTable table = new VersionTable(root, capability);
        byte[] index = Snapshot.bytesOf(new File(root, Entries.INDEX));
        if (index == null) {
            return table;
        }
        Matcher fact = FACT.matcher(new String(index, "UTF-8"));
        Map<ModelFile, String> names = null; // of the last version so far
        List<Version> versions = new ArrayList<>();
        while (fact.find()) {
            if (fact.group(1) != null) {
                names = new LinkedHashMap<>();
                versions.add(new Version((int) Long.parseLong(fact.group(1)), names));
            } else if (names != null) {
                String name = fact.group(3) + fact.group(4);
                long bytes = new File(root, name).length();
                names.put(new ModelFile(fact.group(2), bytes, fact.group(3)), name);
            }
        }
        for (Version version : versions) {
            if (version.isWhole(root, capability) && matches(root, version)) {
                table = table.with(version, true);
            }
        }
        return table;
    }

    private static boolean matches(File root, Version version) throws IOException {
        for (Map.Entry<ModelFile, String> file : version.names().entrySet()) {
            if (!Digests.matches(file.getKey(), new File(root, file.getValue()))) {
                return false;
            }
        }
        return true;
    }
}
