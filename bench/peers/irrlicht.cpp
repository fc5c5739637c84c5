#include <irrlicht.h>

#include <stdexcept>

#include "peers.h"

namespace bench {
namespace {

using namespace irr;

// An Irrlicht particle system holds at most 16250 particles, so a full pool takes two systems.
constexpr int32_t kMaxPerSystem = 12500;
constexpr u32 kFrameMilliseconds = 20;
constexpr u32 kMeanLifeMilliseconds = 3000;

class Systems {
  public:
    Systems(int32_t count, int frames) {
        SIrrlichtCreationParameters parameters;
        parameters.DriverType = video::EDT_NULL;
        parameters.LoggingLevel = ELL_NONE;
        device_ = createDeviceEx(parameters);
        if (device_ == nullptr) throw std::runtime_error("Irrlicht makes no device");
        device_->getSceneManager()->addCameraSceneNode(nullptr, {0, 0, -500}, {0, 0, 0});
        device_->getSceneManager()->getActiveCamera()->render();
        for (int32_t left = count; left > 0; left -= kMaxPerSystem)
            nodes_.push_back(make_node(left < kMaxPerSystem ? left : kMaxPerSystem));
        for (int frame = 0; frame < frames; ++frame) update();
    }
    Systems(const Systems&) = delete;
    Systems& operator=(const Systems&) = delete;
    ~Systems() { device_->drop(); }

    void update() {
        time_ += kFrameMilliseconds;
        for (scene::IParticleSystemSceneNode* node : nodes_) node->doParticleSystem(time_);
    }
    void build_arrays() {
        for (scene::IParticleSystemSceneNode* node : nodes_) node->render();
    }

  private:
    // The birth rate keeps `count` particles alive on average.
    scene::IParticleSystemSceneNode* make_node(int32_t count) {
        scene::IParticleSystemSceneNode* node = device_->getSceneManager()->addParticleSystemSceneNode(false);
        const u32 births = static_cast<u32>(count) * 1000 / kMeanLifeMilliseconds;
        scene::IParticleEmitter* emitter = node->createBoxEmitter(
            {-100, -25, -100, 100, 25, 100}, {0, 0.05f, 0}, births, births, {255, 200, 200, 200}, {255, 255, 255, 255},
            kMeanLifeMilliseconds / 2, kMeanLifeMilliseconds * 3 / 2, 22, {5, 5}, {6, 6});
        node->setEmitter(emitter);
        emitter->drop();
        add(node, node->createGravityAffector({0, -0.03f, 0}, 1000));
        add(node, node->createFadeOutParticleAffector(video::SColor(0, 0, 0, 0), 2000));
        add(node, node->createScaleParticleAffector({15, 15}));
        return node;
    }
    static void add(scene::IParticleSystemSceneNode* node, scene::IParticleAffector* affector) {
        node->addAffector(affector);
        affector->drop();
    }

    IrrlichtDevice* device_ = nullptr;
    std::vector<scene::IParticleSystemSceneNode*> nodes_;
    u32 time_ = 1000;
};

Case irrlicht_case(const char* name, int32_t count, int frames, void (Systems::*work)()) {
    return {case_name(name, count), static_cast<double>(count), [=](Stopwatch& watch) {
                static std::map<int32_t, std::unique_ptr<Systems>> all;
                std::unique_ptr<Systems>& systems = all[count];
                if (!systems) systems = std::make_unique<Systems>(count, frames);
                watch.start();
                ((*systems).*work)();
                watch.stop();
            }};
}

}  // namespace

void add_irrlicht_cases(std::vector<Case>& cases, int frames) {
    for (const int32_t count : kCounts) {
        cases.push_back(irrlicht_case("irrlicht/update", count, frames, &Systems::update));
        cases.push_back(irrlicht_case("irrlicht/arrays", count, frames, &Systems::build_arrays));
    }
}

PeerNote irrlicht_note() {
    return {"Irrlicht " IRRLICHT_SDK_VERSION,
            "update: births, gravity, fade-out, scaling, motion, bounding box; records lie in one array and the last "
            "fills the place of one that died. No wind, drag, rotation or colour curve. arrays: unrotated quads that "
            "face the camera, with colours and normals. No sort."};
}

}  // namespace bench
