package com.lumora.camera.effect.qv.modelcache;

import java.util.Arrays;
import java.util.Collections;
import java.util.List;
import org.jetbrains.annotations.NotNull;
import org.jetbrains.annotations.Nullable;

/**
 * What models are for. A version of a capability is complete when it has one file of each type.
 * Compares by value; immutable.
 */
public final class Capability {
    /** First type of {@link #FACE_TRACKING}. */
    public static final String FACE_TRACKER = "face_tracker_model.bin";
    /** Second type of {@link #FACE_TRACKING}. */
    public static final String FACE_DETECTOR = "face_detector_model.bin";
    /** Third type of {@link #FACE_TRACKING}. */
    public static final String FEATURES = "features_model.bin";
    /** Fourth type of {@link #FACE_TRACKING}. */
    public static final String PDM_MULTIRES = "pdm_multires.bin";
    /** First type of {@link #SEGMENTATION}. */
    public static final String INIT_NET = "seg_init_net.pb";
    /** Second type of {@link #SEGMENTATION}. */
    public static final String PREDICT_NET = "seg_predict_net.pb";

    /** Face tracking: four files. */
    public static final Capability FACE_TRACKING = new Capability(
            "FACE_TRACKING", FACE_TRACKER, FACE_DETECTOR, FEATURES, PDM_MULTIRES);
    /** Segmentation: two files. */
    public static final Capability SEGMENTATION =
            new Capability("SEGMENTATION", INIT_NET, PREDICT_NET);

    private final String mName;
    private final List<String> mTypes;

    /**
     * A capability of your own. Names and types consist of letters, digits, "-", "_" and ".", do not
     * begin with a dot, and have at most 180 characters.
     *
     * @param name if it is that of a known capability, the types have to be the same
     * @param types 1 to 64 types of models, all different
     * @return the capability
     * @throws IllegalArgumentException if name or types break these rules
     */
    public static @NotNull Capability of(@NotNull String name, @NotNull String... types) {
        if (name == null || types == null || Arrays.asList(types).contains(null)) {
            throw new IllegalArgumentException("a capability needs a name and types");
        }
        StoreNatives.load();
        StoreNatives.checkCapability(name, types);
        return new Capability(name, types.clone());
    }

    private Capability(String name, String... types) {
        mName = name;
        mTypes = Collections.unmodifiableList(Arrays.asList(types));
    }

    /** {@return its name} */
    public @NotNull String name() {
        return mName;
    }

    /** {@return the types of its models, in their fixed order} */
    public @NotNull List<String> types() {
        return mTypes;
    }

    @Override
    public boolean equals(@Nullable Object other) {
        return other instanceof Capability && mName.equals(((Capability) other).mName)
                && mTypes.equals(((Capability) other).mTypes);
    }

    @Override
    public int hashCode() {
        return mName.hashCode() + mTypes.hashCode();
    }

    @Override
    public @NotNull String toString() {
        return mName;
    }
}
