#include "platform/media/AVAssetImageGenerator.h"

namespace ostrel {

std::shared_ptr<AVAssetImageGenerator> AVAssetImageGenerator::assetImageGeneratorWithAsset(
    std::shared_ptr<const AVAsset> asset) {
    if (!asset || !asset->file()->canGenerateImages()) return nullptr;
    return std::make_shared<AVAssetImageGenerator>(std::move(asset));
}

}  // namespace ostrel
