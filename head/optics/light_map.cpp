#include "head/optics/light_map.h"

#include <algorithm>
#include <map>
#include <mutex>
#include <thread>
#include <tuple>

#include "head/optics/blur.h"

namespace fringix::head {

namespace {

std::size_t pixelCount(Size size) { return static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height); }

void fillRow(LightMap& map, std::int32_t y) {
  const std::int32_t width = map.view.camera().size().width;
  std::size_t pixel = static_cast<std::size_t>(y) * static_cast<std::size_t>(width);
  for (std::int32_t x = 0; x < width; ++x, ++pixel) {
    const LitPixel lit = map.view.look({1.0 * x, 1.0 * y});
    map.column[pixel] = lit.column;
    map.row[pixel] = lit.row;
    map.reflectance[pixel] = lit.reflectance;
  }
}

// Every n-th row is a thread's: rows differ in how much there is to see.
void fill(LightMap& map) {
  const std::int32_t height = map.view.camera().size().height;
  const auto threads = static_cast<std::int32_t>(std::max(1U, std::thread::hardware_concurrency()));
  std::vector<std::jthread> workers;
  for (std::int32_t first = 0; first < std::min(threads, height); ++first) {
    workers.emplace_back([&map, first, threads, height] {
      for (std::int32_t y = first; y < height; y += threads) fillRow(map, y);
    });
  }
}

// Something that passes may be nearer than all else, so that the levels between and before the scene's own ones are marked, too.
std::vector<bool> blursOf(const LightMap& map, bool somethingPasses) {
  const std::int32_t width = map.view.projector().size().width;
  std::vector<bool> blurs(blurLevels, somethingPasses);
  for (const auto column : map.column) blurs[BlurredPlace(column, width).level] = true;
  while (!blurs.back()) blurs.pop_back();
  return blurs;
}

std::shared_ptr<const LightMap> makeMap(const HeadSettings& settings, std::uint32_t channel, std::shared_ptr<const Scene> scene) {
  auto map = std::make_shared<LightMap>(LightMap{View(settings, channel, std::move(scene))});
  map->column.resize(pixelCount(settings.camera));
  map->row.resize(pixelCount(settings.camera));
  map->reflectance.resize(pixelCount(settings.camera));
  fill(*map);
  map->blurs = blursOf(*map, settings.motion > 0);
  return map;
}

}  // namespace

// A map holds its scene, so that as long as a map lives no other scene has the same address.
std::shared_ptr<const LightMap> lightMapFor(const HeadSettings& settings, std::uint32_t channel,
                                            const std::shared_ptr<const Scene>& scene) {
  using Sides = std::array<std::int32_t, 4>;
  using Key = std::tuple<const Scene*, Sides, std::uint32_t, double, double, bool>;
  static std::mutex mutex;
  static std::map<Key, std::weak_ptr<const LightMap>> maps;
  const Sides sides{settings.camera.width, settings.camera.height, settings.projector.width, settings.projector.height};
  const Key key{scene.get(), sides, channel, settings.defocus, settings.shine, settings.motion > 0};
  const std::lock_guard lock(mutex);
  std::erase_if(maps, [](const auto& entry) { return entry.second.expired(); });
  auto map = maps[key].lock();
  if (map == nullptr) maps[key] = map = makeMap(settings, channel, scene);
  return map;
}

}  // namespace fringix::head
