package com.lumora.camera.effect.qv.modelcache;

import java.util.ArrayList;
import java.util.Arrays;
import java.util.Collections;
import java.util.LinkedHashMap;
import java.util.List;
import java.util.Map;

/** The state of a model store at one moment. Immutable. */
final class Snapshot {
    final Map<String, String> paths;
    final Integer active;
    final List<Integer> versions;

    /** @param active the number of the active version; empty if there is none */
    Snapshot(Capability capability, String[] types, String[] paths, int[] active, int[] versions) {
        Map<String, String> byType = new LinkedHashMap<>();
        if (active.length > 0) {
            for (String type : capability.types()) {
                byType.put(type, paths[Arrays.asList(types).indexOf(type)]);
            }
        }
        this.paths = Collections.unmodifiableMap(byType);
        this.active = active.length == 0 ? null : Integer.valueOf(active[0]);
        List<Integer> numbers = new ArrayList<>();
        for (int number : versions) {
            numbers.add(number);
        }
        this.versions = Collections.unmodifiableList(numbers);
    }
}
