package com.lumora.camera.effect.qv.modelcache;

/** What an update may delete to make room, besides inactive versions and files of no version. */
public enum Room {
    /** Nothing else. */
    KEEP_ACTIVE,
    /** As a last resort, the active version's files that the new one does not share. */
    GIVE_UP_ACTIVE
}
