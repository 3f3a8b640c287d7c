#pragma once

#include <memory>

#include "delivery/ModelCache/FacetrackerModelPaths.h"
#include "delivery/ModelCache/TypedCapabilityModelCache.h"

namespace zentrel::vistabase::ardelivery {

/// The models of face tracking.
class FacetrackerModelCache final : public TypedCapabilityModelCache<FacetrackerModelPaths> {
 public:
  explicit FacetrackerModelCache(std::shared_ptr<IFileCache> fileCache);

  bool getModelsForVersion(int version, std::shared_ptr<FacetrackerModelPaths>& out) override;

 protected:
  std::shared_ptr<FacetrackerModelPaths> modelsFromEntries(const ModelEntries& entries) override;
};

}  // namespace zentrel::vistabase::ardelivery
