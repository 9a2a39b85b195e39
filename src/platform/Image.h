// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <utility>
#include <vector>

namespace platform {

/// A small picture as plain pixels, row by row from the top, each 0xAARRGGBB with straight alpha.
struct Image {
    int width = 0;
    int height = 0;
    std::vector<std::uint32_t> pixels;

    bool operator==(const Image&) const = default;
};

/// One drawing at several sizes, smallest first. Copies share the pixels, since a bar item hands its drawing
/// on with every tick; they never change.
class Images {
public:
    Images() = default;
    Images(std::initializer_list<Image> list)
        : Images(std::vector<Image>(list))
    {
    }
    explicit Images(std::vector<Image> list)
        : list_(std::make_shared<const std::vector<Image>>(std::move(list)))
    {
    }

    [[nodiscard]] std::size_t size() const { return list_->size(); }
    [[nodiscard]] auto begin() const { return list_->begin(); }
    [[nodiscard]] auto end() const { return list_->end(); }

    bool operator==(const Images& other) const { return list_ == other.list_ || *list_ == *other.list_; }

private:
    std::shared_ptr<const std::vector<Image>> list_ = std::make_shared<const std::vector<Image>>();
};

} // namespace platform
