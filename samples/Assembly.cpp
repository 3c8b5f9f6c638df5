#include "Assembly.h"

#include "Solids.h"

#include <osg/Geode>
#include <osg/Material>
#include <osg/MatrixTransform>

#include <array>
#include <cmath>
#include <string>

namespace samples {

namespace {

constexpr double kDegree = 3.14159265358979323846 / 180.0;
constexpr double kHeadHeight = 1.42;
constexpr double kHingeRadius = 0.085;
constexpr double kLegTilt = 21.0 * kDegree;
constexpr double kUpperLegLength = 0.95;
constexpr int kSides = 16;
constexpr int kSmallSides = 8;

enum class Finish { Housing, Trim, Rubber, Wood, Steel, Brass, Glass, Display };

struct FinishInfo {
    const char* name;
    osg::Vec3d color;
    double shine;
};

const FinishInfo& infoOf(Finish finish) {
    static const FinishInfo kFinishes[] = {
        {"Housing", {0.93, 0.90, 0.82}, 0.25}, {"Trim", {0.86, 0.42, 0.10}, 0.25},
        {"Rubber", {0.16, 0.17, 0.18}, 0.10},  {"Wood", {0.86, 0.66, 0.26}, 0.15},
        {"Steel", {0.62, 0.65, 0.68}, 0.60},   {"Brass", {0.80, 0.64, 0.30}, 0.55},
        {"Glass", {0.22, 0.34, 0.58}, 0.90},   {"Display", {0.62, 0.78, 0.66}, 0.20}};
    return kFinishes[static_cast<std::size_t>(finish)];
}

osg::Vec4 tone(const osg::Vec3d& color, double level) {
    const osg::Vec3f scaled = color * level;
    return {scaled, 1.0F};
}

osg::ref_ptr<osg::StateSet> makeState(Finish finish) {
    constexpr auto kFace = osg::Material::FRONT_AND_BACK;
    const FinishInfo& info = infoOf(finish);
    osg::ref_ptr<osg::Material> material = new osg::Material;
    material->setName(info.name);
    material->setAmbient(kFace, tone(info.color, 0.85));
    material->setDiffuse(kFace, tone(info.color, 0.60));
    material->setEmission(kFace, tone(info.color, 0.08));
    material->setSpecular(kFace, tone(osg::Vec3d(1.0, 1.0, 1.0), info.shine));
    material->setShininess(kFace, static_cast<float>(16.0 + 60.0 * info.shine));
    osg::ref_ptr<osg::StateSet> state = new osg::StateSet;
    state->setAttributeAndModes(material);
    return state;
}

/// Makes parts; all parts of one finish share its state.
class Workshop {
public:
    osg::ref_ptr<osg::Geode> part(const std::string& name) const {
        osg::ref_ptr<osg::Geode> geode = new osg::Geode;
        geode->setName(name);
        return geode;
    }
    void lathe(osg::Geode& geode, Finish finish, const Profile& profile, int sides = kSides) {
        put(geode, finish, makeLathe(profile, sides));
    }
    void box(osg::Geode& geode, Finish finish, const osg::Vec3d& center, const osg::Vec3d& size,
             double chamfer = 0.0) {
        put(geode, finish, makeBox(center, size, chamfer));
    }

private:
    void put(osg::Geode& geode, Finish finish, const osg::ref_ptr<osg::Geometry>& geometry) {
        osg::ref_ptr<osg::StateSet>& state = m_states[static_cast<std::size_t>(finish)];
        if (!state) {
            state = makeState(finish);
        }
        geometry->setStateSet(state);
        geometry->setName(infoOf(finish).name);
        geode.addDrawable(geometry);
    }
    std::array<osg::ref_ptr<osg::StateSet>, 8> m_states;
};

osg::ref_ptr<osg::MatrixTransform> joint(const std::string& name, const osg::Matrixd& matrix) {
    osg::ref_ptr<osg::MatrixTransform> transform = new osg::MatrixTransform(matrix);
    transform->setName(name);
    return transform;
}

Profile cylinder(double radius, double low, double high) {
    return {{0.0, low}, {radius, low}, {radius, high}, {0.0, high}};
}

/// Everything below the hinge of one leg; it hangs down the negative z axis.
osg::ref_ptr<osg::Node> makeLeg(Workshop& shop) {
    const osg::ref_ptr<osg::Geode> upper = shop.part("UpperLeg");
    constexpr double kStileOffset = 0.034;
    for (const double x : {-kStileOffset, kStileOffset}) {
        shop.box(*upper, Finish::Wood, {x, 0.0, -kUpperLegLength / 2.0},
                 {0.022, 0.030, kUpperLegLength});
    }
    shop.box(*upper, Finish::Steel, {0.0, 0.0, -0.02}, {0.094, 0.034, 0.05});
    shop.box(*upper, Finish::Rubber, {0.0, 0.0, 0.04 - kUpperLegLength}, {0.098, 0.044, 0.07});

    const osg::ref_ptr<osg::Geode> clamp = shop.part("Clamp");
    shop.lathe(*clamp, Finish::Trim, {{0.0, 0.0}, {0.016, 0.0}, {0.020, 0.012}, {0.0, 0.012}},
               kSmallSides);
    const auto clampJoint =
        joint("ClampScrew", osg::Matrixd::rotate(90.0 * kDegree, osg::Vec3d(1.0, 0.0, 0.0)) *
                                osg::Matrixd::translate(0.0, -0.022, 0.04 - kUpperLegLength));
    clampJoint->addChild(clamp);

    // The legs are pulled out until their tips stand on the ground.
    const double legLength = kHeadHeight / std::cos(kLegTilt);
    constexpr double kShoeLength = 0.10;
    const auto extension =
        joint("LegExtension", osg::Matrixd::translate(0.0, 0.0, -(legLength - kShoeLength)));
    const osg::ref_ptr<osg::Geode> lower = shop.part("LowerLeg");
    const double stile = legLength - kShoeLength - 0.45;
    shop.box(*lower, Finish::Wood, {0.0, 0.0, stile / 2.0}, {0.040, 0.026, stile});
    extension->addChild(lower);

    const auto shoeJoint = joint("Shoe", osg::Matrixd::translate(0.0, 0.0, 0.0));
    const osg::ref_ptr<osg::Geode> shoe = shop.part("ShoeBody");
    shop.lathe(*shoe, Finish::Steel,
               {{0.0, -kShoeLength}, {0.006, -0.07}, {0.020, -0.05}, {0.026, 0.05}, {0.0, 0.05}},
               kSmallSides);
    shop.box(*shoe, Finish::Steel, {0.0, 0.035, -0.02}, {0.030, 0.07, 0.010});
    shoeJoint->addChild(shoe);
    extension->addChild(shoeJoint);

    osg::ref_ptr<osg::Group> leg = new osg::Group;
    leg->setName("Leg");
    leg->addChild(upper);
    leg->addChild(clampJoint);
    leg->addChild(extension);
    return leg;
}

osg::ref_ptr<osg::Node> makeTripod(Workshop& shop) {
    const auto tripod = joint("Tripod", osg::Matrixd::translate(0.0, 0.0, kHeadHeight));
    const osg::ref_ptr<osg::Geode> head = shop.part("TripodHead");
    shop.lathe(*head, Finish::Steel,
               {{0.035, -0.030}, {0.095, -0.030}, {0.100, -0.010}, {0.092, 0.012}, {0.0, 0.012}});
    shop.lathe(*head, Finish::Rubber, cylinder(0.018, -0.11, -0.02), kSmallSides);
    tripod->addChild(head);
    const osg::ref_ptr<osg::Node> leg = makeLeg(shop);
    for (int i = 0; i < 3; ++i) {
        const auto swing = joint(
            "LegHinge" + std::to_string(i + 1),
            osg::Matrixd::rotate(kLegTilt, osg::Vec3d(1.0, 0.0, 0.0)) *
                osg::Matrixd::translate(0.0, kHingeRadius, 0.0) *
                osg::Matrixd::rotate((120.0 * i + 30.0) * kDegree, osg::Vec3d(0.0, 0.0, 1.0)));
        swing->addChild(leg);
        tripod->addChild(swing);
    }
    return tripod;
}

osg::ref_ptr<osg::Node> makeTelescope(Workshop& shop) {
    // The barrel is turned about z and then laid down to look along y.
    const auto telescope =
        joint("Telescope", osg::Matrixd::rotate(14.0 * kDegree, osg::Vec3d(1.0, 0.0, 0.0)) *
                               osg::Matrixd::translate(0.0, 0.0, 0.150));
    const auto barrelAxis =
        joint("BarrelAxis", osg::Matrixd::rotate(-90.0 * kDegree, osg::Vec3d(1.0, 0.0, 0.0)));
    const osg::ref_ptr<osg::Geode> barrel = shop.part("Barrel");
    shop.box(*barrel, Finish::Housing, {0.0, 0.0, 0.0}, {0.092, 0.096, 0.110}, 0.014);
    shop.lathe(*barrel, Finish::Housing,
               {{0.034, 0.050}, {0.036, 0.060}, {0.036, 0.100}, {0.030, 0.104}});
    shop.lathe(*barrel, Finish::Rubber,
               {{0.036, 0.072}, {0.0385, 0.074}, {0.0385, 0.092}, {0.036, 0.094}});
    shop.lathe(*barrel, Finish::Glass, {{0.031, 0.096}, {0.018, 0.100}, {0.0, 0.1015}});
    shop.lathe(*barrel, Finish::Housing, {{0.0, -0.074}, {0.026, -0.074}, {0.030, -0.050}});
    barrelAxis->addChild(barrel);

    const auto eyepiece = joint("Eyepiece", osg::Matrixd::translate(0.0, 0.0, -0.074));
    const osg::ref_ptr<osg::Geode> ring = shop.part("EyepieceRing");
    shop.lathe(*ring, Finish::Rubber,
               {{0.0, -0.034}, {0.012, -0.034}, {0.016, -0.030}, {0.020, -0.012}, {0.022, 0.0}});
    shop.lathe(*ring, Finish::Glass, {{0.0, -0.0345}, {0.009, -0.0343}, {0.009, -0.030}},
               kSmallSides);
    eyepiece->addChild(ring);
    barrelAxis->addChild(eyepiece);

    const auto sight = joint("Sight", osg::Matrixd::translate(0.0, -0.056, 0.0));
    const osg::ref_ptr<osg::Geode> sightBody = shop.part("SightBody");
    shop.box(*sightBody, Finish::Rubber, {0.0, 0.0, 0.0}, {0.014, 0.018, 0.060});
    sight->addChild(sightBody);
    barrelAxis->addChild(sight);
    telescope->addChild(barrelAxis);
    return telescope;
}

osg::ref_ptr<osg::Node> makePanel(Workshop& shop) {
    const auto panel =
        joint("Panel", osg::Matrixd::rotate(-18.0 * kDegree, osg::Vec3d(1.0, 0.0, 0.0)) *
                           osg::Matrixd::translate(0.0, -0.078, 0.030));
    const osg::ref_ptr<osg::Geode> body = shop.part("PanelBody");
    shop.box(*body, Finish::Rubber, {0.0, 0.0, 0.0}, {0.170, 0.022, 0.084}, 0.006);
    shop.box(*body, Finish::Display, {-0.030, -0.011, 0.006}, {0.088, 0.003, 0.054}, 0.001);
    for (int row = 0; row < 4; ++row) {
        for (int column = 0; column < 3; ++column) {
            shop.box(*body, Finish::Housing, {0.032 + 0.017 * column, -0.0115, 0.026 - 0.016 * row},
                     {0.012, 0.004, 0.010}, 0.0);
        }
    }
    panel->addChild(body);
    return panel;
}

osg::ref_ptr<osg::Node> makeAlidade(Workshop& shop) {
    const auto alidade =
        joint("Alidade", osg::Matrixd::rotate(35.0 * kDegree, osg::Vec3d(0.0, 0.0, 1.0)) *
                             osg::Matrixd::translate(0.0, 0.0, 0.100));
    const osg::ref_ptr<osg::Geode> yoke = shop.part("Yoke");
    shop.lathe(*yoke, Finish::Rubber,
               {{0.0, -0.012}, {0.060, -0.012}, {0.064, 0.004}, {0.0, 0.004}});
    shop.box(*yoke, Finish::Housing, {0.0, 0.0, 0.038}, {0.190, 0.130, 0.070}, 0.010);
    for (const double x : {-0.076, 0.076}) {
        shop.box(*yoke, Finish::Housing, {x, 0.0, 0.140}, {0.046, 0.104, 0.190}, 0.012);
        shop.box(*yoke, Finish::Trim, {x * 1.29, 0.0, 0.150}, {0.010, 0.070, 0.090}, 0.004);
        shop.box(*yoke, Finish::Rubber, {x, 0.0, 0.262}, {0.020, 0.026, 0.070}, 0.004);
    }
    shop.box(*yoke, Finish::Rubber, {0.0, 0.0, 0.300}, {0.172, 0.028, 0.024}, 0.007);
    alidade->addChild(yoke);

    const osg::ref_ptr<osg::Geode> knob = shop.part("Knob");
    shop.lathe(
        *knob, Finish::Rubber,
        {{0.0, 0.0}, {0.010, 0.0}, {0.010, 0.014}, {0.017, 0.016}, {0.016, 0.034}, {0.0, 0.036}},
        kSmallSides);
    const osg::Vec3d east(0.0, 1.0, 0.0);
    const auto slowMotion =
        joint("HorizontalDrive", osg::Matrixd::rotate(90.0 * kDegree, east) *
                                     osg::Matrixd::translate(0.094, 0.0, 0.030));
    slowMotion->addChild(knob);
    alidade->addChild(slowMotion);
    const auto tiltDrive = joint("VerticalDrive", osg::Matrixd::rotate(90.0 * kDegree, east) *
                                                      osg::Matrixd::translate(0.102, 0.0, 0.150));
    tiltDrive->addChild(knob);
    alidade->addChild(tiltDrive);

    alidade->addChild(makePanel(shop));
    alidade->addChild(makeTelescope(shop));
    return alidade;
}

osg::ref_ptr<osg::Node> makeTribrach(Workshop& shop) {
    const auto tribrach = joint("Tribrach", osg::Matrixd::translate(0.0, 0.0, kHeadHeight + 0.012));
    const osg::ref_ptr<osg::Geode> base = shop.part("TribrachBody");
    shop.lathe(*base, Finish::Steel, cylinder(0.072, 0.0, 0.008), 6);
    shop.lathe(*base, Finish::Rubber,
               {{0.0, 0.040}, {0.066, 0.040}, {0.070, 0.050}, {0.062, 0.082}, {0.0, 0.082}});
    shop.lathe(*base, Finish::Brass, {{0.0, 0.082}, {0.014, 0.082}, {0.014, 0.088}, {0.0, 0.090}},
               kSmallSides);
    tribrach->addChild(base);

    const osg::ref_ptr<osg::Geode> screw = shop.part("Screw");
    shop.lathe(*screw, Finish::Steel, cylinder(0.005, 0.0, 0.050), kSmallSides);
    shop.lathe(*screw, Finish::Trim,
               {{0.0, 0.012}, {0.016, 0.012}, {0.018, 0.016}, {0.018, 0.028}, {0.0, 0.032}},
               kSides);
    for (int i = 0; i < 3; ++i) {
        const double a = (120.0 * i + 90.0) * kDegree;
        const auto footScrew =
            joint("FootScrew" + std::to_string(i + 1),
                  osg::Matrixd::translate(0.052 * std::cos(a), 0.052 * std::sin(a), 0.004));
        footScrew->addChild(screw);
        tribrach->addChild(footScrew);
    }
    tribrach->addChild(makeAlidade(shop));
    return tribrach;
}

} // namespace

osg::ref_ptr<osg::Node> makeTotalStation() {
    Workshop shop;
    const auto station = joint("TotalStation", osg::Matrixd::identity());
    const osg::ref_ptr<osg::Geode> mark = shop.part("GroundMark");
    shop.lathe(*mark, Finish::Brass, {{0.030, 0.0}, {0.028, 0.006}, {0.004, 0.009}, {0.0, 0.007}},
               kSmallSides);
    station->addChild(mark);
    station->addChild(makeTripod(shop));
    station->addChild(makeTribrach(shop));
    return station;
}

} // namespace samples
