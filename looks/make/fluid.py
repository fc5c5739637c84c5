"""A small periodic 2-D fluid: "Stable Fluids" (Stam 1999) with vorticity confinement (Fedkiw, Stam, Jensen 2001)."""
import numpy as np
from scipy.ndimage import map_coordinates


class Fluid:
    """A grid of unit cells. u, v: velocity in cells per step. fields: transported quantities, by name."""

    def __init__(self, height, width):
        self.shape = (height, width)
        self.u, self.v = np.zeros(self.shape), np.zeros(self.shape)
        self.fields = {}
        self.y, self.x = np.mgrid[0:height, 0:width].astype(float)
        self.ky = np.fft.fftfreq(height)[:, None] * 2 * np.pi
        self.kx = np.fft.rfftfreq(width)[None, :] * 2 * np.pi

    def confine(self, strength):
        """Vorticity confinement: restores the eddies that a coarse grid damps."""
        vorticity = np.gradient(self.v, axis=1) - np.gradient(self.u, axis=0)
        gy, gx = np.gradient(np.abs(vorticity))
        length = np.hypot(gx, gy) + 1e-5
        self.u += strength * gy / length * vorticity
        self.v -= strength * gx / length * vorticity

    def project(self):
        """Removes the divergence of the velocity."""
        u, v = np.fft.rfft2(self.u), np.fft.rfft2(self.v)
        squared = self.kx**2 + self.ky**2
        squared[0, 0] = 1
        share = (self.kx * u + self.ky * v) / squared
        self.u = np.fft.irfft2(u - self.kx * share, s=self.shape)
        self.v = np.fft.irfft2(v - self.ky * share, s=self.shape)

    def advect(self):
        """Transports velocity and fields by one step, with backward tracing by the midpoint method."""
        def at(field, y, x, order):
            return map_coordinates(field, [y, x], order=order, mode="grid-wrap")

        half_y, half_x = self.y - 0.5 * self.v, self.x - 0.5 * self.u
        y, x = self.y - at(self.v, half_y, half_x, 1), self.x - at(self.u, half_y, half_x, 1)
        self.u, self.v = at(self.u, y, x, 1), at(self.v, y, x, 1)
        for name, field in self.fields.items():
            self.fields[name] = at(field, y, x, 3).clip(0, None)

    def step(self, confinement):
        self.confine(confinement)
        self.project()
        self.advect()
