#pragma once

/// Thrown by every wait of an operation (an answer of the line, a pause, a box) once the program ends.
///
/// It unwinds the operation from where it stands, so that nothing happens that it would have done afterwards. Nobody
/// catches it but the two places that turn it into `Outcome::Cancelled`: the runner of the station's operations, and
/// what shows an outcome to the user.
struct Ended {};
