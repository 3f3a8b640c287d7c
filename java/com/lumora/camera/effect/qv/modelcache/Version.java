package com.lumora.camera.effect.qv.modelcache;

import java.io.File;
import java.util.ArrayList;
import java.util.List;
import java.util.Map;

/** A complete version: its files in the order of their types, with the names of their entries. */
final class Version {
    private final int mNumber;
    private final Map<ModelFile, String> mNames;

    Version(int number, Map<ModelFile, String> names) {
        mNumber = number;
        mNames = names;
    }

    int number() {
        return mNumber;
    }

    Map<ModelFile, String> names() {
        return mNames;
    }

    /** Whether it has one file of each type, all of which are there, as far as their sizes tell. */
    boolean isWhole(File root, Capability capability) {
        List<String> types = new ArrayList<>();
        for (Map.Entry<ModelFile, String> file : mNames.entrySet()) {
            File entry = new File(root, file.getValue());
            if (entry.length() != file.getKey().sizeBytes() || !entry.isFile()) {
                return false;
            }
            types.add(file.getKey().type());
        }
        return types.equals(capability.types()); // Those of other releases may be others.
    }
}
