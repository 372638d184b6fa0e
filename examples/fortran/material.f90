! A tension test of rubber, a block of stretches at once: Ogden's model with three terms, natural rubber after
! R. W. Ogden, Proc. R. Soc. Lond. A 326 (1972) 565.  The library finds the lateral stretch.
!
!   gfortran material.f90 $(pkg-config --cflags --libs sharedanalysis-fortran sharedanalysis-host)
program material
  use, intrinsic :: iso_c_binding
  use sharedanalysis
  implicit none
  integer(c_int32_t), parameter :: n = 13
  real(c_double), parameter :: exponents(3) = [1.3_c_double, 5.0_c_double, -2.0_c_double]
  ! Ogden's constants mu = 0.618, 0.00118, -0.00981 MPa belong to mu/alpha; the library takes them to 2 mu/alpha**2.
  real(c_double), parameter :: moduli(3) = [0.618e6_c_double, 1180.0_c_double, -9810.0_c_double]*exponents/2
  real(c_double), dimension(n) :: stretch, lateral = 0, flag = 0, stress, bound, bulk, rd1 = 1e9_c_double, zero = 0
  real(c_double) :: mu(n, 3), alpha(n, 3)
  integer :: i

  stretch = [(1 + 0.5_c_double*(i - 1), i=1, n)]
  do i = 1, 3
    mu(:, i) = moduli(i)
    alpha(:, i) = exponents(i)
  end do
  call SPX_MAT_HYPEROGDENUNIEXP(n, mu(:, 1), alpha(:, 1), mu(:, 2), alpha(:, 2), mu(:, 3), alpha(:, 3), rd1, zero, zero, stretch, &
                                lateral, flag, stress, bound, bulk)
  print "(a)", "stretch  lateral   stress of the undeformed area, MPa"
  print "(f7.2, f9.5, f14.5)", (stretch(i), lateral(i), stress(i)*lateral(i)**2*1e-6_c_double, i=1, n)
end program material
