#pragma once

/// The whole public interface: the stores, the caches beneath them, and the soft-error sink.

#include "delivery/FileCache/createFileCache.h"
#include "delivery/FileCache/recoverMetadata.h"
#include "delivery/ModelCache/FacetrackerModelCache.h"
#include "delivery/ModelCache/SegmentationModelCache.h"
#include "platform/softerror/softerror.h"
#include "store/FileStore.h"
#include "store/ModelStore.h"
