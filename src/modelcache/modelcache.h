#pragma once

/// All that a host includes: the stores, the caches beneath them, and where soft errors go.

#include "delivery/FileCache/createFileCache.h"
#include "delivery/FileCache/recoverMetadata.h"
#include "delivery/ModelCache/FacetrackerModelCache.h"
#include "delivery/ModelCache/SegmentationModelCache.h"
#include "platform/softerror/softerror.h"
#include "store/FileStore.h"
#include "store/ModelStore.h"
