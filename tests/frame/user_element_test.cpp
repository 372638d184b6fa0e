// Checks of user elements: which elements are named by which text, in which order; copies to and from categories.
#include "spx.h"
#include "tests/support/random.h"
#include "tests/support/recording_diagnostics.h"

namespace {

using namespace sharedanalysis::test;

// Elements with nodes of 3, 1 and 3 degrees of freedom and sound lumped masses.
struct Block {
  std::vector<int32_t> nodeDofs = {3, 1, 3}, elements;
  int32_t n, ndof = 7, nodes = 3;
  std::vector<double> M;

  explicit Block(int32_t count) : elements(count), n(count) {
    M.assign(count * 49, 0.0);
    std::iota(elements.begin(), elements.end(), 2001);
    for (int e = 0; e < n; ++e)
      for (int i = 1; i <= ndof; ++i) at(e, i, i) = i <= 3 ? 0.3 : i == 4 ? 2.5 : -1.0;
  }
  double& at(int e, int i, int j) { return M[(i - 1 + (j - 1) * ndof) * n + e]; }
  using Checker = decltype(&SPX_OPE_USERELEMPROCESSMASS);
  // The messages, each as one text.
  Calls messages(Checker checker) const {
    resetRecordingHost();
    checker(&n, &ndof, &nodes, nodeDofs.data(), elements.data(), M.data());
    Calls texts = takeMessages();
    for (std::string& text : texts) text = text.starts_with("***ERROR: ") ? text.substr(10) : "no error: " + text;
    EXPECT_EQ(recordingHost().statuses.size(), texts.size());
    return texts;
  }
};

const std::string kMatrix = "The specified mass matrix for user element ";

using UserElements = RecordedDiagnostics;

TEST_F(UserElements, SoundElementsAreNotNamed) {
  EXPECT_EQ(Block(300).messages(SPX_OPE_USERELEMPROCESSMASS), Calls());
  EXPECT_EQ(Block(300).messages(SPX_OPE_USERELEMPROCESSROTINERT), Calls());
  EXPECT_TRUE(recordingDiagnostics().calls.empty());
  Block negative(1);
  negative.n = -1;
  EXPECT_EQ(negative.messages(SPX_OPE_USERELEMPROCESSMASS), Calls());
  Block inertia(1); // a full tensor at a node
  inertia.at(0, 1, 2) = inertia.at(0, 2, 1) = 0.1;
  inertia.at(0, 6, 7) = inertia.at(0, 7, 6) = -0.1, inertia.at(0, 5, 5) = 7;
  EXPECT_EQ(inertia.messages(SPX_OPE_USERELEMPROCESSROTINERT), Calls());
}

TEST_F(UserElements, EachFailingElementIsNamedOncePerCheck) {
  Block block(200);
  block.at(3, 1, 2) = 5e-324; // unsymmetric and coupled within a node
  block.at(3, 3, 1) = 1;
  block.at(140, 3, 4) = block.at(140, 4, 3) = 1; // between nodes
  block.at(141, 7, 1) = block.at(141, 1, 7) = -1;
  block.at(199, 6, 7) = block.at(199, 7, 6) = std::nextafter(2.0, 3.0); // symmetric to the last bit
  block.at(17, 2, 2) = 0.3 + 1e-6, block.at(17, 3, 3) = 7;
  block.at(18, 2, 1) = -0.0;                                                        // a zero
  block.at(5, 1, 1) = block.at(6, 4, 4) = std::numeric_limits<double>::quiet_NaN(); // 4: alone at its node
  const std::string within = " has non-zero off-diagonal entries on the diagonal blocks.",
                    different = " has different values for the diagonal entries belonging to the same node.";
  EXPECT_EQ(block.messages(SPX_OPE_USERELEMPROCESSMASS),
            (Calls{kMatrix + "2004 is unsymmetric.", kMatrix + "2006 is unsymmetric.", kMatrix + "2007 is unsymmetric.",
                   kMatrix + "2141 has non-zero off-diagonal entries.",
                   kMatrix + "2142 has non-zero off-diagonal entries.", kMatrix + "2004" + within,
                   kMatrix + "2200" + within, kMatrix + "2006" + different, kMatrix + "2018" + different}));
  EXPECT_EQ(block.messages(SPX_OPE_USERELEMPROCESSROTINERT),
            (Calls{kMatrix + "2004 is unsymmetric.", kMatrix + "2006 is unsymmetric.", kMatrix + "2007 is unsymmetric.",
                   kMatrix + "2141 has invalid non-zero off-diagonal entries.",
                   kMatrix + "2142 has invalid non-zero off-diagonal entries."}));

  block.at(199, 6, 7) = 2; // one bit away
  EXPECT_EQ(block.messages(SPX_OPE_USERELEMPROCESSROTINERT)[3], kMatrix + "2200 is unsymmetric.");
}

TEST_F(UserElements, ElementsOfInstances) {
  recordingDiagnostics().inParts = true;
  Block block(2);
  block.elements = {2005, 9001}; // the second is of no instance
  for (int e : {0, 1}) block.at(e, 1, 2) = block.at(e, 1, 7) = 1, block.at(e, 3, 3) = 2;
  Calls inertia = block.messages(SPX_OPE_USERELEMPROCESSROTINERT), texts = block.messages(SPX_OPE_USERELEMPROCESSMASS);
  EXPECT_TRUE(takeStatuses()[0].find(kMatrix + "5 of instance Wheel-1  is unsymmetric.") != std::string::npos);
  texts.insert(texts.end(), inertia.end() - 2, inertia.end());
  // broken lines lose the blanks at the break; so compare without blanks
  const auto compact = [](std::string text) {
    std::erase(text, ' ');
    return text;
  };
  Calls expected;
  for (const char* ending : {" is unsymmetric.", " has non-zero off-diagonal entries.",
                             " has non-zero off-diagonal entries on the diagonal blocks.",
                             " has different values for the diagonal entries belonging to the same node.",
                             " has invalid non-zero off-diagonal entries."})
    for (const char* element : {"5 of instance Wheel-1", "9001"})
      expected.push_back(compact(kMatrix + element + ending));
  for (std::string& text : texts) text = compact(text);
  EXPECT_EQ(texts, expected);
}

TEST_F(UserElements, ManyElements) {
  Block block(200000);
  block.at(199999, 1, 1) = 7;
  EXPECT_EQ(block.messages(SPX_OPE_USERELEMPROCESSMASS).size(), 1u);
}

TEST_F(UserElements, CategoriesHoldElementsOfSeveralTypes) {
  // elements of 7 and of 2 values in records of 8
  Random random(1);
  const int32_t ld = 8, n[] = {3, 2}, ncomp[] = {7, 2}, map0[] = {5, 1, 4}, map1[] = {2, 3};
  std::vector<double> category(40, -1), own0(21), own1(4), back(21);
  for (double& x : own0) x = random.uniform(0, 1);
  for (double& x : own1) x = random.uniform(0, 1);
  SPX_OPE_USERELEMTOCAT(&n[0], &ncomp[0], &ld, map0, own0.data(), category.data());
  SPX_OPE_USERELEMTOCAT(&n[1], &ncomp[1], &ld, map1, own1.data(), category.data());
  for (std::size_t k = 0; k < 7; ++k) {
    EXPECT_EQ(category[32 + k], own0[3 * k]);
    EXPECT_EQ(category[k], own0[3 * k + 1]);
    EXPECT_EQ(category[16 + k], k < 2 ? own1[2 * k + 1] : -1);
  }
  SPX_OPE_USERELEMFROMCAT(&n[0], &ncomp[0], &ld, map0, back.data(), category.data());
  EXPECT_EQ(back, own0);

  Block block(3);
  for (double& x : block.M) x = random.uniform(0, 1);
  SPX_OPE_USERELEMTOCATMASS(&block.n, &block.ndof, &ld, map0, block.M.data(), category.data());
  for (int e = 0; e < 3; ++e)
    for (int i = 1; i <= 7; ++i) EXPECT_EQ(category[8 * (map0[e] - 1) + i - 1], block.at(e, i, i));
  EXPECT_EQ(category[7], -1);
}

} // namespace
