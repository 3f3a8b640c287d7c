package com.lumora.camera.effect.qv.modelcache;

import java.util.Arrays;
import java.util.Collections;
import java.util.List;
import org.jetbrains.annotations.NotNull;

/** What models are for. A version of a capability is complete when it has one file of each type. */
public enum Capability {
    /** Face tracking: four files. */
    FACE_TRACKING("face_tracker_model.bin", "face_detector_model.bin", "features_model.bin",
            "pdm_multires.bin"),
    /** Segmentation: two files. */
    SEGMENTATION("seg_init_net.pb", "seg_predict_net.pb");

    private final List<String> mTypes;

    Capability(String... types) {
        mTypes = Collections.unmodifiableList(Arrays.asList(types));
    }

    /** {@return the types of its models, in their fixed order} */
    public @NotNull List<String> types() {
        return mTypes;
    }
}
