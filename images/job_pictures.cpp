#include "images/job_pictures.h"

namespace alg {

JobPictures::JobPictures(const Job& job) {
  std::size_t index = 0;
  for (const PictureRole& role : job.operation->pictures) {
    const Image& picture = job.pictures[index];
    if (role.size != PictureRole::Size::kSameAsImage && picture.pixels != nullptr) {
      views_[index] = {picture.pixels, picture.width, picture.height};
      ready_ = ready_ && ((picture.redFirst && picture.isPacked()) || copy(picture, index));
    }
    ++index;
  }
}

bool JobPictures::copy(const Image& picture, std::size_t index) {
  copies_[index] = allocateBlock(picture.rowBytes() * static_cast<std::size_t>(picture.height));
  const Image copied{copies_[index].get(), picture.width, picture.height,
                     static_cast<std::ptrdiff_t>(picture.rowBytes()), true};
  if (copied.pixels == nullptr) {
    return false;
  }
  for (int y = 0; y < picture.height; ++y) {
    colourRow(picture.row(y), picture.row(y), copied.row(y),
              static_cast<std::size_t>(picture.width), picture.orderTo(copied));
  }
  views_[index].pixels = copied.pixels;
  return true;
}

}  // namespace alg
