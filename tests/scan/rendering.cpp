#include "rendering.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace fringix::scan::test {

namespace {

Vector minus(const Vector& a, const Vector& b) { return {a[0] - b[0], a[1] - b[1], a[2] - b[2]}; }
double times(const Vector& a, const Vector& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }
Vector at(const Ray& ray, double distance) {
  return {ray.origin[0] + distance * ray.direction[0], ray.origin[1] + distance * ray.direction[1],
          ray.origin[2] + distance * ray.direction[2]};
}

Vector intoFrameOf(const Optics& optics, const Vector& p) {
  Vector result{};
  for (std::size_t i = 0; i < 3; ++i) result[i] = times(optics.rotation[i], p) + optics.translation[i];
  return result;
}

Vector outOfFrameOf(const Optics& optics, const Vector& v) {
  Vector result{};
  for (std::size_t i = 0; i < 3; ++i) {
    for (std::size_t j = 0; j < 3; ++j) result[i] += optics.rotation[j][i] * v[j];
  }
  return result;
}

Place bent(const Distortion& d, double x, double y) {
  const double r2 = x * x + y * y;
  const double radial = 1 + d.k1 * r2 + d.k2 * r2 * r2 + d.k3 * r2 * r2 * r2;
  return {x * radial + 2 * d.p1 * x * y + d.p2 * (r2 + 2 * x * x), y * radial + d.p1 * (r2 + 2 * y * y) + 2 * d.p2 * x * y};
}

// By going back and forth: slow and sure.
Place straightened(const Distortion& d, double x, double y) {
  Place place{x, y};
  for (int i = 0; i < 200; ++i) {
    const Place there = bent(d, place.x, place.y);
    const double missX = x - there.x;
    const double missY = y - there.y;
    place = {place.x + missX, place.y + missY};
    if (std::abs(missX) + std::abs(missY) < 1e-14) break;
  }
  return place;
}

constexpr int samplesPerColumn = 256;
constexpr std::ptrdiff_t reach = 12;  // columns of a blur that count

// How much of the light of the columns about it arrives at a place that lies `offset` behind the middle of one: the columns are boxes
// that the projector's lens blurs.
std::vector<double> weightsAt(double offset, double blur) {
  std::vector<double> weights;
  const auto upTo = [&](double border) { return std::erf((border - offset) / (blur * std::sqrt(2.0))); };
  for (std::ptrdiff_t i = -reach; i <= reach; ++i) {
    const auto column = static_cast<double>(i);
    weights.push_back(0.5 * (upTo(column + 0.5) - upTo(column - 0.5)));
  }
  return weights;
}

// The light of a whole line from half a column before its first, sampled finely: linear between samples it is right to 1e-5.
std::vector<float> sampledLight(const std::vector<std::uint8_t>& line, const Light& light) {
  std::vector<double> levels(line.size() + 2 * reach + 1, 0);
  for (std::size_t i = 0; i < line.size(); ++i) levels[i + reach] = std::pow(line[i] / 255.0, light.gamma);
  std::vector<float> samples((line.size() + 1) * samplesPerColumn);
  for (std::size_t fraction = 0; fraction < samplesPerColumn; ++fraction) {
    const std::vector<double> weights = weightsAt(static_cast<double>(fraction) / samplesPerColumn - 0.5, light.blur);
    for (std::size_t column = 0; column <= line.size(); ++column) {
      const double sum = std::inner_product(weights.begin(), weights.end(), levels.begin() + static_cast<std::ptrdiff_t>(column), 0.0);
      samples[column * samplesPerColumn + fraction] = static_cast<float>(sum);
    }
  }
  return samples;
}

double between(const std::vector<float>& samples, double column) {
  const double place = std::clamp((column + 0.5) * samplesPerColumn, 0.0, static_cast<double>(samples.size() - 2));
  const auto index = static_cast<std::size_t>(place);
  const double share = place - static_cast<double>(index);
  return (1 - share) * static_cast<double>(samples[index]) + share * static_cast<double>(samples[index + 1]);
}

}  // namespace

Scene plane(Vector normal, double distance) {
  return [=](const Ray& ray) -> std::optional<double> {
    const double along = times(normal, ray.direction);
    const double length = (distance - times(normal, ray.origin)) / along;
    return length > 0 ? std::optional(length) : std::nullopt;
  };
}

Scene sphere(Vector centre, double radius) {
  return [=](const Ray& ray) -> std::optional<double> {
    const Vector from = minus(ray.origin, centre);
    const double a = times(ray.direction, ray.direction);
    const double b = times(from, ray.direction);
    const double root = b * b - a * (times(from, from) - radius * radius);
    return root < 0 ? std::nullopt : std::optional((-b - std::sqrt(root)) / a);
  };
}

Scene nearestOf(Scene one, Scene other) {
  return [one = std::move(one), other = std::move(other)](const Ray& ray) -> std::optional<double> {
    const auto first = one(ray);
    const auto second = other(ray);
    if (first && second) return std::min(*first, *second);
    return first ? first : second;
  };
}

Ray rayThrough(const Optics& optics, double column, double row) {
  const Place place = straightened(optics.distortion, (column - optics.cx) / optics.fx, (row - optics.cy) / optics.fy);
  const Vector back = {-optics.translation[0], -optics.translation[1], -optics.translation[2]};
  return {outOfFrameOf(optics, back), outOfFrameOf(optics, {place.x, place.y, 1})};
}

Place shownAt(const Optics& optics, const Vector& point) {
  const Vector p = intoFrameOf(optics, point);
  const Place place = bent(optics.distortion, p[0] / p[2], p[1] / p[2]);
  return {optics.fx * place.x + optics.cx, optics.fy * place.y + optics.cy};
}

Rendering::Rendering(const Calibration& calibration, std::size_t camera, const Scene& scene) {
  const Optics& optics = calibration.cameras[camera];
  for (std::int32_t row = 0; row < optics.height; ++row) {
    for (std::int32_t column = 0; column < optics.width; ++column) truth_.push_back(truthOf(calibration, camera, scene, column, row));
  }
}

Truth Rendering::truthOf(const Calibration& calibration, std::size_t camera, const Scene& scene, double column, double row) const {
  Truth truth;
  const Ray ray = rayThrough(calibration.cameras[camera], column, row);
  const auto distance = scene(ray);
  if (!distance) return truth;
  const Optics& projector = calibration.projector;
  truth.point = at(ray, *distance);
  const Place lamp = shownAt(projector, truth.point);
  const bool inside = lamp.x > -0.5 && lamp.x < projector.width - 0.5 && lamp.y > -0.5 && lamp.y < projector.height - 0.5;
  const Ray light = rayThrough(projector, lamp.x, lamp.y);
  const auto reached = scene(light);
  truth.column = lamp.x;
  truth.lit = inside && reached && std::abs(*reached - intoFrameOf(projector, truth.point)[2]) < 1e-3;
  const double step = 1e-4 * *distance;
  const double moved = shownAt(projector, at(ray, *distance + step)).x - shownAt(projector, at(ray, *distance - step)).x;
  truth.alongRay = std::abs(2 * step * std::sqrt(times(ray.direction, ray.direction)) / moved);
  return truth;
}

std::vector<std::uint8_t> Rendering::picture(const Plan& plan, std::size_t number, const Light& light) const {
  const std::vector<float> samples = sampledLight(plan.line(number), light);
  std::mt19937 chance(light.seed * 1000 + static_cast<unsigned>(number));
  std::normal_distribution<double> noise;
  std::vector<std::uint8_t> picture;
  picture.reserve(truth_.size());
  for (const Truth& truth : truth_) {
    double level = light.dark + (truth.lit ? (light.bright - light.dark) * between(samples, truth.column) : 0.0);
    const double variance = light.noise * light.noise + light.variancePerLevel * level;
    if (variance > 0) level += std::sqrt(variance) * noise(chance);
    picture.push_back(static_cast<std::uint8_t>(std::clamp(std::lround(level), 0L, 255L)));
  }
  return picture;
}

std::vector<std::vector<std::uint8_t>> Rendering::pictures(const Plan& plan, const Light& light) const {
  std::vector<std::vector<std::uint8_t>> pictures;
  for (std::size_t i = 0; i < plan.pictures().size(); ++i) pictures.push_back(picture(plan, i, light));
  return pictures;
}

Matrix turned(double aboutX, double aboutY, double aboutZ) {
  const double sx = std::sin(aboutX), cx = std::cos(aboutX);
  const double sy = std::sin(aboutY), cy = std::cos(aboutY);
  const double sz = std::sin(aboutZ), cz = std::cos(aboutZ);
  return {{{cz * cy, cz * sy * sx - sz * cx, cz * sy * cx + sz * sx},
           {sz * cy, sz * sy * sx + cz * cx, sz * sy * cx - cz * sx},
           {-sy, cy * sx, cy * cx}}};
}

namespace {

// Looks from `place` to a point 400 mm ahead of camera 0.
Optics looking(Optics optics, Vector place, double tilt, double roll) {
  optics.rotation = turned(tilt, std::atan2(place[0], 400 - place[2]), roll);
  const Vector moved = intoFrameOf({optics.width, optics.height, 1, 1, 0, 0, {}, optics.rotation, {}}, place);
  optics.translation = {-moved[0], -moved[1], -moved[2]};
  return optics;
}

}  // namespace

Calibration smallHead(std::int32_t cameraWidth, std::int32_t cameraHeight, std::int32_t projectorWidth) {
  Calibration head;
  head.serial = 1001;
  head.date = "2024-02-29";
  const double width = cameraWidth;
  head.cameras = {{cameraWidth,
                   cameraHeight,
                   1.1 * width,
                   1.1 * width,
                   0.49 * width,
                   0.51 * cameraHeight,
                   {-0.12, 0.05, 0.001, -0.0015, 0.01},
                   identity,
                   {}}};
  const std::int32_t projectorHeight = projectorWidth * 5 / 8;
  head.projector = {projectorWidth,
                    projectorHeight,
                    1.05 * projectorWidth,
                    1.05 * projectorWidth,
                    0.5 * projectorWidth,
                    0.52 * projectorHeight,
                    {-0.1, 0.06, -0.001, 0.002, -0.01},
                    identity,
                    {}};
  head.projector = looking(head.projector, {150, 10, 0}, 0.02, 0.01);
  return head;
}

Calibration randomHead(std::mt19937& chance) {
  std::uniform_real_distribution<double> share(-1, 1);
  Calibration head = smallHead(96, 72);
  for (Optics* const optics : {&head.cameras[0], &head.projector}) {
    optics->fx *= 1 + 0.2 * share(chance);
    optics->fy = optics->fx * (1 + 0.02 * share(chance));
    optics->cx += 0.05 * optics->width * share(chance);
    optics->distortion = {0.2 * share(chance), 0.05 * share(chance), 0.003 * share(chance), 0.003 * share(chance), 0.01 * share(chance)};
  }
  const double side = share(chance) < 0 ? -1 : 1;
  head.projector = looking(head.projector, {side * (150 + 50 * share(chance)), 60 * share(chance), 20 * share(chance)},
                           0.05 * share(chance), 0.1 * share(chance));
  return head;
}

std::vector<const std::uint8_t*> pointersTo(const std::vector<std::vector<std::uint8_t>>& pictures) {
  std::vector<const std::uint8_t*> pointers;
  for (const auto& picture : pictures) pointers.push_back(picture.data());
  return pointers;
}

}  // namespace fringix::scan::test
