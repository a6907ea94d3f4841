// SPDX-License-Identifier: MIT
#pragma once

#include <tuple>

struct ExpNode_t;
struct Node;

/**
 * Splits a wanted interval into what the hardware runs at and how many of its samples make one reported sample.
 *
 * @param sampling  seconds between two reported samples; at least 1e-5 is taken
 * @param maxPeriod longest interval in seconds that the hardware may run at; at least 1e-5 is taken
 * @return hardware interval in seconds, and the factor
 */
std::tuple<float, unsigned> splitSamplingInterval(float sampling, float maxPeriod);
/// The way back: the reported interval and the hardware's own, in seconds, each at least 1e-5.
std::tuple<float, float> joinSamplingInterval(float interval, unsigned factor);

// Node types without a sampling interval read as 0.0 and are not written to.
float hardwareSamplingInterval(const ExpNode_t &node);
void setHardwareSamplingInterval(ExpNode_t &node, float interval);
/// Makes the hardware sample at least every maxPeriod seconds and notes the factor in the node.
void setDownsampling(Node &node, float maxPeriod);
/// The interval between two reported samples in seconds; 0.0 if the node has none.
float reportedSamplingInterval(const Node &node);
