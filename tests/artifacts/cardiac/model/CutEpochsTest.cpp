#include "artifacts/cardiac/model/CutEpochs.h"

#include "tests/artifacts/cardiac/BeatTimeBases.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <vector>

namespace emeg {
namespace {

constexpr std::size_t length = 60;

/// Three components of unit length that overlap on every part of the epoch, of unlike energies.
PrincipalComponents threeComponents() {
  PrincipalComponents model;
  for (int k = 0; k < 3; ++k) {
    PrincipalComponents::Component component;
    double energy = 0;
    for (std::size_t j = 0; j < length; ++j) {
      component.shape.push_back(
          std::cos((k + 1) * (static_cast<double>(j) + 0.5) * std::numbers::pi / length));
      energy += component.shape.back() * component.shape.back();
    }
    for (double& value : component.shape) value /= std::sqrt(energy);
    component.scores = noise(20, static_cast<unsigned>(k) + 1);
    for (double& score : component.scores) score *= std::pow(0.3, k);
    component.scores[7] = 0;
    model.components.push_back(component);
  }
  return model;
}

/// What the scores are meant to make small, by its definition.
double penalisedError(const CutEpoch& cut, const PrincipalComponents& model) {
  std::vector<double> energies;
  for (const auto& component : model.components) {
    double energy = 0;
    for (std::size_t i = 0; i < component.scores.size(); ++i)
      if (i != cut.epoch) energy += component.scores[i] * component.scores[i];
    energies.push_back(energy);
  }
  double error = 0;
  for (std::size_t j = cut.inside.begin; j < cut.inside.end; ++j) {
    double value = cut.values[j];
    for (const auto& component : model.components) value -= component.scores[cut.epoch] * component.shape[j];
    error += value * value;
  }
  for (std::size_t k = 0; k < energies.size(); ++k) {
    const double score = model.components[k].scores[cut.epoch];
    error += 0.1 * energies.back() / energies[k] * score * score;
  }
  return error;
}

TEST(CutEpochs, TheScoresAreTheBestForWhatThereIs) {
  PrincipalComponents model = threeComponents();
  const CutEpoch cut{7, {22, length}, noise(length, 9)};
  fitScores(cut, model);
  const double least = penalisedError(cut, model);
  for (auto& component : model.components) {
    for (const double change : {-1e-3, 1e-3}) {
      component.scores[7] += change;
      EXPECT_GT(penalisedError(cut, model), least);
      component.scores[7] -= change;
    }
  }
}

TEST(CutEpochs, HalfAnEpochTellsTheSizeOfTheBeat) {
  PrincipalComponents model = threeComponents();
  CutEpoch cut{7, {length / 2, length}, std::vector<double>(length, 0.0)};
  for (std::size_t j = cut.inside.begin; j < length; ++j) cut.values[j] = 5 * model.components[0].shape[j];
  fitScores(cut, model);
  EXPECT_NEAR(model.components[0].scores[7], 5, 0.5);
}

TEST(CutEpochs, ComponentsWithoutScoresAreLeftOut) {
  PrincipalComponents model = threeComponents();
  model.components[1] = {};
  const CutEpoch cut{7, {0, length}, noise(length, 4)};
  fitScores(cut, model);
  EXPECT_TRUE(model.components[1].scores.empty());
  EXPECT_NE(model.components[2].scores[7], 0);
}

TEST(CutEpochs, NothingInsideLeavesTheScoresAlone) {
  PrincipalComponents model = threeComponents();
  fitScores({7, {}, noise(length, 4)}, model);
  for (const auto& component : model.components) EXPECT_EQ(component.scores[7], 0);
}

TEST(CutEpochs, OnlyValuesOfTheRecordingAreResampled) {
  const BeatTimeBase base = timeBaseWith(250, 0.1, 501, {-100, 150, 400, 650});
  const WarpTable table = makeWarpTable(0.5, base);
  std::vector<double> series(501, 3.0); // one value behind the 500 samples, that must not be read
  series.back() = 1e9;
  const RowPart first = valuesInside(base, table, 0, 500);
  const RowPart second = valuesInside(base, table, 1, 500);
  const RowPart third = valuesInside(base, table, 2, 500);
  EXPECT_EQ(first.begin, 200U);
  EXPECT_EQ(first.end, 501U);
  EXPECT_EQ(second.begin, 0U);
  EXPECT_EQ(second.end, 501U);
  EXPECT_EQ(third.begin, 0U);
  EXPECT_EQ(third.end, 199U); // sample 499 is the last
  std::vector<double> values(501);
  resampleInside(series.data(), 500, base, table, 2, third, values);
  for (std::size_t j = 0; j < values.size(); ++j) EXPECT_EQ(values[j], j < 199 ? 3.0 : 0.0);

  const auto half = static_cast<std::size_t>(base.epochHalfLength);
  EXPECT_EQ(epochInside(base, first, second).begin, 200 - (501 - half - 1));
  EXPECT_EQ(epochInside(base, first, second).end, 2 * half + 1);
  EXPECT_EQ(epochInside(base, second, third).begin, 0U);
  EXPECT_EQ(epochInside(base, second, third).end, half + 199);
}

} // namespace
} // namespace emeg
