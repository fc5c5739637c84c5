#include <osg/NodeVisitor>
#include <osgParticle/AccelOperator>
#include <osgParticle/BoxPlacer>
#include <osgParticle/FluidFrictionOperator>
#include <osgParticle/ModularEmitter>
#include <osgParticle/ModularProgram>
#include <osgParticle/RadialShooter>
#include <osgParticle/RandomRateCounter>
#include <osgUtil/CullVisitor>

#include "peers.h"

namespace bench {
namespace {

constexpr double kFrameSeconds = 0.02;

// Runs directly the two classes that osgParticle normally runs from a scene traversal.
class Emitter : public osgParticle::ModularEmitter {
  public:
    void run() { emitParticles(kFrameSeconds); }
};
class Program : public osgParticle::ModularProgram {
  public:
    void run() { execute(kFrameSeconds); }
};

class System {
  public:
    System(int32_t count, int frames) : visitor_(osgUtil::CullVisitor::create()) {
        visitor_->pushViewport(new osg::Viewport(0, 0, 1920, 1080));
        visitor_->pushProjectionMatrix(new osg::RefMatrix(osg::Matrix::perspective(45, 1.78, 1, 10000)));
        visitor_->pushModelViewMatrix(new osg::RefMatrix(osg::Matrix::translate(0, 0, -500)),
                                      osg::Transform::ABSOLUTE_RF);
        set_up_particle();
        set_up_emitter(count);
        set_up_program();
        for (int frame = 0; frame < frames; ++frame) update();
    }
    void update() {
        emitter_->run();
        program_->run();
        system_->update(kFrameSeconds, *visitor_);
    }
    void update_and_sort() {
        system_->setSortMode(osgParticle::ParticleSystem::SORT_BACK_TO_FRONT);
        update();
        system_->setSortMode(osgParticle::ParticleSystem::NO_SORT);
    }

  private:
    void set_up_particle() {
        osgParticle::Particle& particle = system_->getDefaultParticleTemplate();
        particle.setSizeRange({5, 15});
        particle.setAlphaRange({0.6f, 0});
        particle.setColorRange({{1, 0.8f, 0.5f, 1}, {0.1f, 0.1f, 0.1f, 1}});
        particle.setLifeTime(3);
    }
    void set_up_emitter(int32_t count) {
        auto* counter = new osgParticle::RandomRateCounter;
        counter->setRateRange(static_cast<float>(count) / 3, static_cast<float>(count) / 3);
        auto* placer = new osgParticle::BoxPlacer;
        placer->setXRange(-100, 100);
        placer->setYRange(-25, 25);
        placer->setZRange(-100, 100);
        auto* shooter = new osgParticle::RadialShooter;
        shooter->setInitialSpeedRange(35, 65);
        shooter->setInitialRotationalSpeedRange({0, 0, -1}, {0, 0, 1});
        emitter_->setParticleSystem(system_);
        emitter_->setCounter(counter);
        emitter_->setPlacer(placer);
        emitter_->setShooter(shooter);
    }
    void set_up_program() {
        auto* gravity = new osgParticle::AccelOperator;
        gravity->setAcceleration({0, -1, 0});
        auto* air = new osgParticle::FluidFrictionOperator;
        air->setFluidToAir();
        air->setWind({10, 0, 0});
        program_->setParticleSystem(system_);
        program_->addOperator(gravity);
        program_->addOperator(air);
    }

    osg::ref_ptr<osgParticle::ParticleSystem> system_ = new osgParticle::ParticleSystem;
    osg::ref_ptr<Emitter> emitter_ = new Emitter;
    osg::ref_ptr<Program> program_ = new Program;
    osg::ref_ptr<osgUtil::CullVisitor> visitor_;
};

Case osg_case(const char* name, int32_t count, int frames, void (System::*work)()) {
    return {case_name(name, count), static_cast<double>(count), [=](Stopwatch& watch) {
                static std::map<int32_t, std::unique_ptr<System>> all;
                std::unique_ptr<System>& system = all[count];
                if (!system) system = std::make_unique<System>(count, frames);
                watch.start();
                ((*system).*work)();
                watch.stop();
            }};
}

}  // namespace

void add_osg_cases(std::vector<Case>& cases, int frames) {
    for (const int32_t count : kCounts) {
        cases.push_back(osg_case("osg/update", count, frames, &System::update));
        cases.push_back(osg_case("osg/update_and_sort", count, frames, &System::update_and_sort));
    }
}

PeerNote osg_note() {
    return {"osgParticle 3.6",
            "update: births, acceleration, drag with wind, size, colour and opacity from one value to another, "
            "rotation, motion, bounding box. All lives are alike: it has no spread of life. sort: by distance to the "
            "eye, with std::sort of the records themselves. Arrays are made while OpenGL draws, and are not measured."};
}

}  // namespace bench
