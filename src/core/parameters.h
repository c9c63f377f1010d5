#pragma once

// The parameter store: every setting as a process-wide object, kept in parameters.xml of the user's roaming
// folder Kestrane_P3D. The objects live from before the process entry to its end. Values are read and written
// on any thread; the file has one lock, and each save replaces it as a whole.

#include "core/controlids.h"

#include <array>
#include <atomic>
#include <filesystem>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace kst {

/// What all kinds share: name, control, and the value as text as it stands in the file.
class Parameter {
public:
    Parameter(std::string_view name, int controlId) : name_(name), controlId_(controlId) {}
    virtual ~Parameter() = default;
    Parameter(const Parameter&) = delete;
    Parameter& operator=(const Parameter&) = delete;

    std::string_view name() const { return name_; }
    /// The number of its control, control::none for a hidden parameter.
    int controlId() const { return controlId_; }
    /// The value as written to the file: 0 or 1, a number, or the text.
    virtual std::string text() const = 0;
    /// Takes the value from a text of the file, by the rules of the kind, clamped to the limits.
    virtual void setFromText(std::string_view text) = 0;
    virtual void setDefault() = 0;

private:
    std::string_view name_;
    int controlId_;
};

class BoolParameter : public Parameter {
public:
    BoolParameter(std::string_view name, bool defaultValue, int controlId = control::none)
        : Parameter(name, controlId), default_(defaultValue), value_(defaultValue) {}
    bool get() const { return value_.load(std::memory_order_relaxed); }
    operator bool() const { return get(); }
    void set(bool value) { value_.store(value, std::memory_order_relaxed); }
    bool defaultValue() const { return default_; }
    std::string text() const override;
    void setFromText(std::string_view text) override;
    void setDefault() override { set(default_); }

private:
    bool default_;
    std::atomic<bool> value_;
};

class IntParameter : public Parameter {
public:
    IntParameter(std::string_view name, int defaultValue, int minimum, int maximum,
                 int controlId = control::none)
        : Parameter(name, controlId), default_(defaultValue), minimum_(minimum), maximum_(maximum),
          value_(defaultValue) {}
    int get() const { return value_.load(std::memory_order_relaxed); }
    operator int() const { return get(); }
    /// Clamped to the limits.
    void set(int value);
    int defaultValue() const { return default_; }
    int minimum() const { return minimum_; }
    int maximum() const { return maximum_; }
    std::string text() const override;
    void setFromText(std::string_view text) override;
    void setDefault() override { set(default_); }

private:
    int default_;
    int minimum_;
    int maximum_;
    std::atomic<int> value_;
};

class FloatParameter : public Parameter {
public:
    FloatParameter(std::string_view name, float defaultValue, float minimum, float maximum,
                   int controlId = control::none)
        : Parameter(name, controlId), default_(defaultValue), minimum_(minimum), maximum_(maximum),
          value_(defaultValue) {}
    float get() const { return value_.load(std::memory_order_relaxed); }
    operator float() const { return get(); }
    void set(float value);
    float defaultValue() const { return default_; }
    float minimum() const { return minimum_; }
    float maximum() const { return maximum_; }
    std::string text() const override;
    void setFromText(std::string_view text) override;
    void setDefault() override { set(default_); }

private:
    float default_;
    float minimum_;
    float maximum_;
    std::atomic<float> value_;
};

class TextParameter : public Parameter {
public:
    explicit TextParameter(std::string_view name, std::string_view defaultValue = {},
                           int controlId = control::none)
        : Parameter(name, controlId), default_(defaultValue), value_(defaultValue) {}
    std::string get() const;
    bool empty() const { return get().empty(); }
    void set(std::string_view value);
    std::string text() const override { return get(); }
    void setFromText(std::string_view text) override { set(text); }
    void setDefault() override { set(default_); }

private:
    std::string_view default_;
    mutable std::mutex mutex_;
    std::string value_;
};

// Hidden booleans and check boxes.
extern BoolParameter RANDOM;
extern BoolParameter SCAN_LIVERIES, LIG_AUTOMATIC, LIG_PRIORITIZE, SUPPRESS_STUB, LOG, ALWAYS_ON_TOP,
    SCAN_AIRPORTS, AFG_AUTOMATIC, NAV_LIGHTS_WHILE_PARKED, LEARN_SOFT, LIGHT_AIRCRAFT, HELICOPTERS,
    HIGH_PERF_AIRCRAFT, AEROWINX, GUID_CHANGES, AUTO_RANGE, COLLISION_USER_GND, COLLISION_USER_AIR,
    COLLISION_LIVE_PARKED_GND, STRAIGHT_PBS_ONLY, PARK_FAKE, WEEK, PARK_SOFT, INITIAL_LOAD_ONLY;
// Hidden integers and integers with a text box.
extern IntParameter CUSTOM_PARKING_PERCENTAGE, MAIN_WINDOW_X, MAIN_WINDOW_Y, LAST_EPOCH_TIME,
    HOLDING_THRESHOLD_METERS, MAX_HOLDING_MINUTES, P3D_VERSION, MAX_FIT;
extern IntParameter MATCHING_DEPTH, LATERAL_RANGE, AUTO_RANGE_ABOVE_HEIGHT, MAX_LIVE, CUSTOM_MAX_PARK,
    AIRPORT_RANGE, AIRPORT_HEIGHT, parking_percentage;
extern FloatParameter MAX_FIT_FL;
// Hidden texts and texts with a text box.
extern TextParameter PROGRAM_VERSION, PROGRAM_INSTALL_PATH, SIM_INSTALL_PATH, PORT_NUMBER;
extern std::array<TextParameter, 10> lfolder, afolder;
extern TextParameter ALL_INSTALL_PATH, BLOCK_CALLSIGN, DESTINATION;

/// Every parameter, in the order in which the file is read and written.
const std::vector<Parameter*>& allParameters();

/// The folder of parameters.xml, and the file.
std::filesystem::path parametersFolder();
std::filesystem::path parametersFile();

/// Reads the whole store at the start of a run, creating what is missing. Logs as it goes; never throws.
void readParameters();

/// Writes one value to the file, which is loaded and replaced as a whole, and logs "{}={}". A failed save
/// logs "saving xml did not work?"; the value stays in memory. Returns whether it was saved. Any thread.
bool saveParameter(const Parameter& parameter);

/// One value straight from the file, before the store is read; empty when the file or the value is missing.
std::string storedParameterText(std::string_view name);

} // namespace kst
