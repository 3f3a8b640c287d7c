package com.lumora.camera.effect.qv.modelcache;

import java.io.File;
import java.io.FileDescriptor;
import java.io.IOException;
import java.lang.reflect.Array;
import java.lang.reflect.InvocationTargetException;
import java.lang.reflect.Method;
import java.nio.channels.ClosedByInterruptException;
import java.nio.channels.FileChannel;

/**
 * Syncs folders. No class that both Android's API 21 and the desktop have can: the one has
 * android.system.Os, the other file channels that open folders, each to be had by reflection alone.
 */
final class FolderSync {
    private static final Method ANDROID_OPEN = android("open", String.class, int.class, int.class);
    private static final Method ANDROID_SYNC = android("fsync", FileDescriptor.class);
    private static final Method ANDROID_CLOSE = android("close", FileDescriptor.class);

    private FolderSync() {}

    static void sync(File folder) throws IOException {
        try {
            if (ANDROID_OPEN != null) {
                syncOnAndroid(folder);
            } else {
                syncOnDesktop(folder);
            }
        } catch (InvocationTargetException failure) {
            requireSyncing(folder, failure.getCause());
        } catch (ReflectiveOperationException failure) {
            throw new IOException("cannot sync the folder " + folder, failure);
        } catch (IOException failure) {
            requireSyncing(folder, failure);
        }
    }

    /** Some file systems have no such call; they are as safe as they can be. */
    private static void requireSyncing(File folder, Throwable failure) throws IOException {
        String message = String.valueOf(failure.getMessage());
        if (!message.matches("(?s).*(Invalid argument|not supported|EINVAL|ENOTSUP|EOPNOTSUPP).*")) {
            throw new IOException("cannot sync the folder " + folder, failure);
        }
    }

    private static void syncOnAndroid(File folder) throws ReflectiveOperationException {
        Object descriptor = ANDROID_OPEN.invoke(null, folder.getPath(), 0, 0); // to read
        try {
            ANDROID_SYNC.invoke(null, descriptor);
        } finally {
            ANDROID_CLOSE.invoke(null, descriptor);
        }
    }

    private static void syncOnDesktop(File folder) throws IOException, ReflectiveOperationException {
        Method toPath = File.class.getMethod("toPath");
        Object path = toPath.invoke(folder);
        for (Method open : FileChannel.class.getMethods()) {
            Class<?>[] types = open.getParameterTypes();
            if (open.getName().equals("open") && types.length == 2
                    && types[0] == toPath.getReturnType()) {
                Object noOptions = Array.newInstance(types[1].getComponentType(), 0); // to read
                force(open, path, noOptions);
            }
        }
    }

    /** A channel is closed when its thread is interrupted: the sync then has to be made again. */
    private static void force(Method open, Object... arguments)
            throws IOException, ReflectiveOperationException {
        boolean interrupted = false;
        boolean synced = false;
        try {
            while (!synced) {
                interrupted |= Thread.interrupted();
                try (FileChannel channel = (FileChannel) open.invoke(null, arguments)) {
                    channel.force(true);
                    synced = true;
                } catch (ClosedByInterruptException interruption) {
                    interrupted = true;
                }
            }
        } finally {
            if (interrupted) {
                Thread.currentThread().interrupt();
            }
        }
    }

    private static Method android(String name, Class<?>... types) {
        try {
            return Class.forName("android.system.Os").getMethod(name, types);
        } catch (ReflectiveOperationException desktop) {
            return null;
        }
    }
}
