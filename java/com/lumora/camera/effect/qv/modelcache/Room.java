package com.lumora.camera.effect.qv.modelcache;

/** What room may be made of for an update, beyond inactive versions and files of no version. */
public enum Room {
    /** Nothing else. */
    KEEP_ACTIVE,
    /** If there is no other way, the active version's files that the new one does not share. */
    GIVE_UP_ACTIVE
}
